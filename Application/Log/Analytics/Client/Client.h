#pragma once

#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Application/Log/Analytics/Client/ClientInterface.h"
#include "Application/Log/Analytics/Client/ForwardDeclarations.h"
#include "Application/Log/Analytics/Client/SendingStatus.h"
#include "Application/Log/Analytics/Database/RecordedFiles.h"
#include "Application/Log/Analytics/Items/PackageFormat.h"
#include "Core/Utilities/Threads/ThreadedLoop.h"
#include "host/QelUtilities/ExitDeadline.h"

namespace qel::log::analytics {

/// The client that a host creates to take part in the customer involvement programme.
///
/// **Work.** `activate` starts recording the host's broadcasts and memory usage. Stored rows are
/// sent when sending starts, then every ten minutes, and once more when sending stops.
///
/// **Destruction** unregisters the listeners and waits for the last sending pass, until the host's
/// exit deadline (`utilities::setExitDeadline`) or for at most 30 seconds, unless a disk hangs.
/// Queued items are lost unless the host calls `CipDatabases::join` first.
///
/// **Threads.** `sendingStatus` and `endSending` are thread-safe. All other operations must be
/// called on the thread on which the host registers listeners.
class QEL_ANALYTICS_EXPORT Client : public ClientInterface {
 public:
  /// Throws `std::invalid_argument` if `databases` is null.
  explicit Client(std::unique_ptr<CipDatabases> databases);
  ~Client() override;

  /// Throws `qel::exception` if the client is active or has ended, or if `serverHost` is not a host
  /// name. Nothing has changed then. Passes on exceptions from opening the databases. Throws
  /// `std::bad_function_call` if `isSendingAllowed` is empty. The client is then active, but the
  /// next batch ends storage for good.
  void activate(const parameters::ActivateParameter& parameter) override;
  bool isActive() const override { return active_; }
  void registerIssueListStorageListener(
      qel::Broadcaster<qel::log::issue::StorageListenerInterface>& broadcaster,
      std::unique_ptr<IssueListInformationInterface> information) override;
  void startSendingItems() override;
  void stopSendingItems() override;
  /// Ends sending for good, also a transfer in flight. The rows stay stored.
  void endSending();
  /// Withdrawal of the consent: ends recording and sending for good, and removes the recordings.
  /// Waits for the permission functions. Destroys the two database clients. Other threads may
  /// broadcast meanwhile and afterwards; the items are dropped. Returns the list of
  /// `removeRecordings`, or passes on its exception. If a file remains, the next call tries again;
  /// otherwise it returns an empty list. Throws `qel::exception` before `activate`.
  std::vector<RemovedFile> withdraw(const HostFileFilter& isHostFile = {});
  /// How sending goes. Empty before `activate`.
  SendingStatus sendingStatus() const;

 private:
  void initInstances(const parameters::ActivateParameter& parameter);
  void initAndRegisterActionListener();
  void insertEnvironmentItem();
  std::function<bool()> sendItemsFunc();

  // Each member may use the members before it. Members are destroyed in reverse order.
  utilities::DefaultExitDeadline releaseDeadline_;  ///< set during destruction
  bool active_ = false;
  bool sendingStarted_ = false;
  std::size_t packageSizeLimit_ = format::packageSizeLimit;
  std::function<std::unique_ptr<items::EnvironmentItem>()> createEnvironmentItem_;
  std::unique_ptr<CipDatabases> databases_;
  std::shared_ptr<serverconnection::DbToServerConnection> serverConnection_;
  std::optional<std::string> directory_;  ///< of the databases; empty before `activate`
  bool isRemoved_ = false;                ///< all files, by `withdraw`
  const std::unique_ptr<details::SendingState> sendingState_;
  qel::util::ThreadedLoop sendingLoop_;
  std::shared_ptr<listeners::ActionListener> actionListener_;
  std::shared_ptr<listeners::ApplicationListener> applicationListener_;
  std::shared_ptr<listeners::CommandListener> commandListener_;
  std::shared_ptr<listeners::ProjectListener> projectListener_;
  std::shared_ptr<listeners::IssueListStorageListener> issueListStorageListener_;
  std::shared_ptr<listeners::IssueListUserActionListener> issueListUserActionListener_;
  std::shared_ptr<listeners::SaveListener> saveListener_;
  std::shared_ptr<listeners::GeneralListener> generalListener_;
  std::shared_ptr<reports::MemoryUsageObserver> memoryUsageObserver_;
  std::future<void> startupTask_;  ///< if valid, the first start of sending waits for it
  std::shared_ptr<LoggerInterface> logger_;
};

}  // namespace qel::log::analytics
