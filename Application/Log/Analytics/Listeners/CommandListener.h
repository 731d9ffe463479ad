#pragma once

#include <string>

#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/CommandBroadcaster.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::listeners {

/// Records the start and the end of every command. A command ends by being accepted or cancelled.
/// Both items hold the "ID" of the command, but the listener does not pair them.
class QEL_ANALYTICS_EXPORT CommandListener : public qel::broadcaster::CommandListenerInterface {
 public:
  /// The databases must outlive the listener.
  explicit CommandListener(CipDatabases& databases) : databases_(databases) {}

  /// Adds "ID" and "Location" to the details of the event, unless the event has details with these
  /// names. A location that has no name is recorded as "unknown".
  void onCommandStarted(const qel::broadcaster::event::CommandStartEvent& event) override;
  /// Adds "ID" in the same way, but no location.
  void onCommandStopped(const qel::broadcaster::event::CommandStopEvent& event) override;

 private:
  std::string toString(const qel::broadcaster::CommandLocation& location) const;

  CipDatabases& databases_;
};

}  // namespace qel::log::analytics::listeners
