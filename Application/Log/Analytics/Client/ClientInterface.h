#pragma once

#include <memory>

#include "Application/Log/Analytics/Client/ActivateParameter.h"
#include "Application/Log/Analytics/Listeners/IssueListInformationInterface.h"
#include "Core/Utilities/Template/Broadcaster.h"
#include "QelAnalyticsExport.h"
#include "host/QelIssueUi/StorageListenerInterface.h"

namespace qel::log::analytics {

/// The analytics client. All operations must be called on the same thread of the host.
class QEL_ANALYTICS_EXPORT ClientInterface {
 public:
  virtual ~ClientInterface() = default;

  /// Opens the databases, registers the listeners, and starts sending if the host allows it. Can
  /// succeed only once.
  virtual void activate(const parameters::ActivateParameter& parameter) = 0;
  /// Whether `activate` has registered the listeners. Never becomes false again.
  virtual bool isActive() const = 0;
  /// Records the changes of stored issues that `broadcaster` announces, until the client is
  /// destroyed. `information` provides the texts for the issues. May be called before or after
  /// `activate`. The listener stays registered, so `broadcaster` must not notify while the client
  /// is being destroyed.
  virtual void registerIssueListStorageListener(
      qel::Broadcaster<qel::log::issue::StorageListenerInterface>& broadcaster,
      std::unique_ptr<IssueListInformationInterface> information) = 0;
  /// Starts sending in an activated client, or restarts it. A sending pass starts at once. If
  /// sending is still running, the call first stops it and waits for its last pass. That pass may
  /// wait for the server or for a database that another process has locked. The call stops waiting
  /// at the exit deadline.
  virtual void startSendingItems() = 0;
  /// Ends sending after one more pass, without waiting for that pass. Reports an assertion failure
  /// if sending was never started.
  virtual void stopSendingItems() = 0;
};

}  // namespace qel::log::analytics
