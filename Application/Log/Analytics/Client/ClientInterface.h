#pragma once

#include <memory>

#include "Application/Log/Analytics/Client/ActivateParameter.h"
#include "Application/Log/Analytics/Listeners/IssueListInformationInterface.h"
#include "Core/Utilities/Template/Broadcaster.h"
#include "QelAnalyticsExport.h"
#include "host/QelIssueUi/StorageListenerInterface.h"

namespace qel::log::analytics {

/// The analytics client. All calls come from one thread of the host.
class QEL_ANALYTICS_EXPORT ClientInterface {
 public:
  virtual ~ClientInterface() = default;

  /// Opens the databases, registers the listeners, and starts sending if the host allows it. Can be
  /// called once.
  virtual void activate(const parameters::ActivateParameter& parameter) = 0;
  /// Whether `activate` has registered the listeners. Never becomes false again.
  virtual bool isActive() const = 0;
  /// Records the stored issues that the broadcaster announces, with texts from `information`, until
  /// the client is destroyed. Independent of activation. The listener stays registered, so the
  /// broadcaster must not notify while the client is destroyed.
  virtual void registerIssueListStorageListener(
      qel::Broadcaster<qel::log::issue::StorageListenerInterface>& broadcaster,
      std::unique_ptr<IssueListInformationInterface> information) = 0;
  /// Starts sending after activation, or restarts it with an immediate pass. Waits for a loop that
  /// still runs, which makes a last pass first. The wait lasts as long as the exchanges of that
  /// pass take or a database is held, and at most until the exit deadline.
  virtual void startSendingItems() = 0;
  /// Ends sending after one more pass and does not wait for it. Reports an assertion if nothing was
  /// started.
  virtual void stopSendingItems() = 0;
};

}  // namespace qel::log::analytics
