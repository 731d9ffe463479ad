#include "host/QelNotification/Notification.h"

#include <string>

#include "host/QelNotification/NotificationTable.h"

namespace qel::notification {

Broadcast readNotification(Fields& fields) {
  const auto name = fields.text("notify");
  for (const auto& notifications :
       {applicationNotifications(), projectNotifications(), issueNotifications()}) {
    for (const auto& known : notifications) {
      if (known.name == name) {
        return known.read(fields);
      }
    }
  }
  throw NotificationError("field \"notify\": unknown notification " + quoted(name));
}

Broadcast readNotification(std::string_view json) {
  const auto object = parseJson(json);
  Fields fields(object);
  auto broadcast = readNotification(fields);
  fields.expectAllRead();
  return broadcast;
}

}  // namespace qel::notification
