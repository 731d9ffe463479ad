#include "host/QelIssueUi/UserActionBroadcaster.h"

#include "Core/Utilities/Template/Singleton.h"

namespace qel::log::issue::ui {

UserActionBroadcaster& UserActionBroadcaster::getInstance() {
  return singleton<UserActionBroadcaster>();
}

}  // namespace qel::log::issue::ui
