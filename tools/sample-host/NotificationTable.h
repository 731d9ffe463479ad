#pragma once

#include <span>
#include <string_view>
#include <utility>

#include "tools/sample-host/Fields.h"
#include "tools/sample-host/SessionScript.h"

namespace qel::samplehost {

/// The name of a listener operation, and the function that creates its broadcast from a script's
/// fields.
struct Notification {
  std::string_view name;
  Broadcast (*read)(Fields&);
};

// All notifications that a script can contain, by subject.
std::span<const Notification> applicationNotifications();
std::span<const Notification> projectNotifications();
std::span<const Notification> issueNotifications();

/// Returns a function that notifies the listeners of the process's `Broadcaster`.
template <typename Broadcaster, typename Operation, typename... Arguments>
Broadcast broadcastOf(Operation operation, Arguments... arguments) {
  return [operation, ... arguments = std::move(arguments)] {
    Broadcaster::getInstance().notify(operation, arguments...);
  };
}

}  // namespace qel::samplehost
