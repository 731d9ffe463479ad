#include "host/QelNotification/IssueStorageBroadcaster.h"

#include "Core/Utilities/Template/Singleton.h"

namespace qel::notification {

IssueStorageBroadcaster& IssueStorageBroadcaster::getInstance() {
  return singleton<IssueStorageBroadcaster>();
}

}  // namespace qel::notification
