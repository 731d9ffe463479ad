#pragma once

#include <functional>
#include <string_view>

#include "host/QelUtilities/Exception.h"

namespace qel::notification {

/// A notification is invalid. The message names the field.
class NotificationError : public qel::exception {
 public:
  using qel::exception::exception;
};

/// Broadcasts one notification through the process's broadcasters, which say on which threads that
/// is allowed. May be called several times.
using Broadcast = std::function<void()>;

/// Reads a notification: a JSON object (UTF-8) that names the listener operation in the member
/// "notify" and has the operation's fields. Broadcasts nothing. Throws `NotificationError` if the
/// text is no JSON object, if the operation or a field is unknown, or if a field is missing or
/// mistyped. Thread-safe.
Broadcast readNotification(std::string_view json);

}  // namespace qel::notification
