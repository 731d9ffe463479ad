#pragma once

#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/GeneralBroadcaster.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::listeners {

/// Records events that describe themselves. Each event stays alive until its item has been written.
class QEL_ANALYTICS_EXPORT GeneralListener : public qel::broadcaster::GeneralListenerInterface {
 public:
  /// The databases must outlive the listener.
  explicit GeneralListener(CipDatabases& databases) : databases_(databases) {}

  /// Also records a null event. Its category is empty, and it has no subcategory, event or details.
  void onGeneralAction(
      std::shared_ptr<const qel::broadcaster::event::GeneralEventInterface> event) override;

 private:
  CipDatabases& databases_;
};

}  // namespace qel::log::analytics::listeners
