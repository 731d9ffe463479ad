#pragma once

#include "Core/Utilities/Template/Broadcaster.h"
#include "Core/Utilities/Template/Singleton.h"
#include "host/QelIssueUi/StorageListenerInterface.h"

namespace qel::samplehost {

/// Broadcasts changes to the program's stored issues.
class IssueStorageBroadcaster : public Broadcaster<log::issue::StorageListenerInterface> {
 public:
  static IssueStorageBroadcaster& getInstance() { return singleton<IssueStorageBroadcaster>(); }
};

}  // namespace qel::samplehost
