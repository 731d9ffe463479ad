#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelBroadcaster/GeneralBroadcaster.h"

namespace qel::broadcaster {
namespace {

/// The one broadcaster of its kind, never destroyed: a client may outlive `main` and still
/// unregister.
template <typename T>
T& instanceOf() {
  static auto* const instance = new T;
  return *instance;
}

}  // namespace

ActionBroadcaster& ActionBroadcaster::getInstance() { return instanceOf<ActionBroadcaster>(); }

ApplicationBroadcaster& ApplicationBroadcaster::getInstance() {
  return instanceOf<ApplicationBroadcaster>();
}

GeneralBroadcaster& GeneralBroadcaster::getInstance() { return instanceOf<GeneralBroadcaster>(); }

}  // namespace qel::broadcaster
