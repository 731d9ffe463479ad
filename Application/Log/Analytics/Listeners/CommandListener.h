#pragma once

#include <string>

#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/CommandBroadcaster.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::listeners {

/// Records every command as it starts and as it ends, accepted or cancelled. The two items of one
/// command carry the same "ID"; nothing pairs them here.
class QEL_ANALYTICS_EXPORT CommandListener : public qel::broadcaster::CommandListenerInterface {
 public:
  explicit CommandListener(CipDatabases& databases) : databases_(databases) {}

  void onCommandStarted(const qel::broadcaster::event::CommandStartEvent& event) override;
  void onCommandStopped(const qel::broadcaster::event::CommandStopEvent& event) override;

 private:
  std::string toString(const qel::broadcaster::CommandLocation& location) const;

  CipDatabases& databases_;
};

}  // namespace qel::log::analytics::listeners
