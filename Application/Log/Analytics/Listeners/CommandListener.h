#pragma once

#include <string>

#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/CommandBroadcaster.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::listeners {

/// Records every command as it starts and as it ends, accepted or cancelled. The two items of one
/// command carry the command's "ID"; nothing pairs them here.
class QEL_ANALYTICS_EXPORT CommandListener : public qel::broadcaster::CommandListenerInterface {
 public:
  /// The databases outlive the listener.
  explicit CommandListener(CipDatabases& databases) : databases_(databases) {}

  /// Adds "ID" and "Location" to the event's details, unless it has details of these names itself.
  /// A location without a name is "unknown".
  void onCommandStarted(const qel::broadcaster::event::CommandStartEvent& event) override;
  /// Adds "ID" in the same way, and no location.
  void onCommandStopped(const qel::broadcaster::event::CommandStopEvent& event) override;

 private:
  std::string toString(const qel::broadcaster::CommandLocation& location) const;

  CipDatabases& databases_;
};

}  // namespace qel::log::analytics::listeners
