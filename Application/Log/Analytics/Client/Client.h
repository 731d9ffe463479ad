#pragma once

#include <cstddef>
#include <functional>
#include <future>
#include <memory>

#include "Application/Log/Analytics/Client/ClientInterface.h"
#include "Application/Log/Analytics/Items/PackageFormat.h"
#include "Core/Utilities/Threads/ThreadedLoop.h"
#include "host/QelUtilities/ExitDeadline.h"

namespace qel::log {
class LoggerInterface;
}

namespace qel::log::analytics {

class CipDatabases;

namespace items {
class EnvironmentItem;
}
namespace listeners {
class ActionListener;
class ApplicationListener;
class CommandListener;
class GeneralListener;
class IssueListStorageListener;
class IssueListUserActionListener;
class ProjectListener;
class SaveListener;
}  // namespace listeners
namespace reports {
class MemoryUsageObserver;
}
namespace serverconnection {
class DbToServerConnection;
}

/// The one object that a host makes to take part in the customer involvement programme.
///
/// Made with the database pair, it does nothing until `activate`. From then on it records what the
/// host broadcasts, samples memory, and sends what is stored: at once, every ten minutes, and once
/// more when it is destroyed. Destruction takes the listeners off the broadcasters and waits for
/// that last pass, for 30 seconds at most unless the host has armed an exit deadline
/// (`utilities::setExitDeadline`); only a disk that hangs can take longer. What is queued by then
/// is lost unless the host calls `CipDatabases::join` first. All operations belong to one thread,
/// the one that broadcasters are registered on.
class QEL_ANALYTICS_EXPORT Client : public ClientInterface {
 public:
  /// Throws `std::invalid_argument` when `databases` is null.
  explicit Client(std::unique_ptr<CipDatabases> databases);
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  ~Client() override;

  /// Throws `qel::exception` when the client is active already, `std::bad_function_call` when
  /// `isSendingAllowed` is empty (the client is active then, and storage ends for good with the
  /// next batch), and whatever opening the databases throws.
  void activate(const parameters::ActivateParameter& parameter) override;
  bool isActive() const override { return active_; }
  void registerIssueListStorageListener(
      qel::Broadcaster<qel::log::issue::StorageListenerInterface>& broadcaster,
      std::unique_ptr<IssueListInformationInterface> information) override;
  void startSendingItems() override;
  void stopSendingItems() override;

 private:
  void initInstances(const parameters::ActivateParameter& parameter);
  void initAndRegisterActionListener();
  void insertEnvironmentItem();
  std::function<bool()> sendItemsFunc();

  // In the order in which they must come to life; they go in the reverse order.
  utilities::DefaultExitDeadline releaseDeadline_;  ///< armed while the others go
  bool active_ = false;
  bool sendingStarted_ = false;
  std::size_t packageSizeLimit_ = format::packageSizeLimit;
  std::function<std::unique_ptr<items::EnvironmentItem>()> createEnvironmentItem_;
  std::unique_ptr<CipDatabases> databases_;
  std::shared_ptr<serverconnection::DbToServerConnection> serverConnection_;
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
  std::future<void> startupTask_;  ///< what the first sending has to wait for, if anything
  std::shared_ptr<LoggerInterface> logger_;
};

}  // namespace qel::log::analytics
