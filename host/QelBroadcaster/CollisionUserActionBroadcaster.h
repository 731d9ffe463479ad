#pragma once

#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

/// Receives user actions in the collision list.
class CollisionUserActionListenerInterface {
 public:
  virtual ~CollisionUserActionListenerInterface() = default;

  /// The user chose an entry of the list's context menu. `action` is the host's text for the entry.
  virtual void onCollisionListControlContextMenuClicked(const std::string& action) = 0;
};

/// The process's broadcaster of user actions in the collision list.
class CollisionUserActionBroadcaster : public Broadcaster<CollisionUserActionListenerInterface> {
 public:
  /// Returns the same object in every library. The object is never destroyed.
  static CollisionUserActionBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
