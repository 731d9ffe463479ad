#pragma once

#include <memory>

#include "Application/Log/Analytics/Client/ActivateParameter.h"
#include "Application/Log/Analytics/Listeners/IssueListInformationInterface.h"
#include "Core/Utilities/Template/Broadcaster.h"
#include "QelAnalyticsExport.h"
#include "host/QelIssueUi/StorageListenerInterface.h"

namespace qel::log::analytics {

/// The analytics client, as the host uses it: on one thread of the host's.
class QEL_ANALYTICS_EXPORT ClientInterface {
 public:
  virtual ~ClientInterface() = default;

  /// Opens the databases, registers the listeners, and starts sending if the host allows it. Once
  /// only.
  virtual void activate(const parameters::ActivateParameter& parameter) = 0;
  /// True from the moment when `activate` has registered the listeners, for good.
  virtual bool isActive() const = 0;
  /// Records what the broadcaster tells of stored issues, in the words of `information`, from now
  /// until the client is gone; it is not taken off the broadcaster, which must
  /// not notify while the client is destroyed. Independent of activation.
  virtual void registerIssueListStorageListener(
      qel::Broadcaster<qel::log::issue::StorageListenerInterface>& broadcaster,
      std::unique_ptr<IssueListInformationInterface> information) = 0;
  /// After activation: starts sending, or starts it anew with a pass at once. Waits for a loop that
  /// still runs, which makes a last pass first: as long as its exchanges take or a database is
  /// held, and until the exit deadline at most.
  virtual void startSendingItems() = 0;
  /// Lets sending end with one more pass and does not wait for it. An assertion reports that
  /// nothing was started.
  virtual void stopSendingItems() = 0;
};

}  // namespace qel::log::analytics
