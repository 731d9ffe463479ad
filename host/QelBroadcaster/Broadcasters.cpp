#include "Core/Utilities/Template/Singleton.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelBroadcaster/CollisionUserActionBroadcaster.h"
#include "host/QelBroadcaster/CommandBroadcaster.h"
#include "host/QelBroadcaster/GeneralBroadcaster.h"
#include "host/QelBroadcaster/ProjectBroadcaster.h"
#include "host/QelBroadcaster/SaveBroadcaster.h"

namespace qel::broadcaster {

ActionBroadcaster& ActionBroadcaster::getInstance() { return singleton<ActionBroadcaster>(); }

ApplicationBroadcaster& ApplicationBroadcaster::getInstance() {
  return singleton<ApplicationBroadcaster>();
}

CollisionUserActionBroadcaster& CollisionUserActionBroadcaster::getInstance() {
  return singleton<CollisionUserActionBroadcaster>();
}

CommandBroadcaster& CommandBroadcaster::getInstance() { return singleton<CommandBroadcaster>(); }

GeneralBroadcaster& GeneralBroadcaster::getInstance() { return singleton<GeneralBroadcaster>(); }

ProjectBroadcaster& ProjectBroadcaster::getInstance() { return singleton<ProjectBroadcaster>(); }

SaveBroadcaster& SaveBroadcaster::getInstance() { return singleton<SaveBroadcaster>(); }

}  // namespace qel::broadcaster
