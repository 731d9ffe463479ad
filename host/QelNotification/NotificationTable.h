#pragma once

#include <span>
#include <string_view>
#include <utility>

#include "host/QelNotification/Fields.h"
#include "host/QelNotification/Notification.h"

namespace qel::notification {

/// The name of a listener operation, and the function that creates its broadcast from the fields of
/// a notification.
struct Notification {
  std::string_view name;
  Broadcast (*read)(Fields&);
};

/// Creates the broadcast of the notification that the fields describe. The caller must then check
/// that all fields were read. Throws as the public function does.
Broadcast readNotification(Fields& fields);

// All notifications, by subject.
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

}  // namespace qel::notification
