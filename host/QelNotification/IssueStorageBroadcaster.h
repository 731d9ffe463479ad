#pragma once

#include "Core/Utilities/Template/Broadcaster.h"
#include "host/QelIssueUi/StorageListenerInterface.h"

namespace qel::notification {

/// Broadcasts the changes of stored issues that notifications describe.
class IssueStorageBroadcaster : public Broadcaster<log::issue::StorageListenerInterface> {
 public:
  /// Returns the same object in every library. The object is never destroyed.
  static IssueStorageBroadcaster& getInstance();
};

}  // namespace qel::notification
