#include "tools/sample-host/Notifications.h"

#include "tools/sample-host/NotificationTable.h"

namespace qel::samplehost {

Broadcast readNotification(const std::string& name, Fields& fields) {
  for (const auto& notifications :
       {applicationNotifications(), projectNotifications(), issueNotifications()}) {
    for (const auto& known : notifications) {
      if (known.name == name) {
        return known.read(fields);
      }
    }
  }
  throw InputError("field \"notify\": unknown notification " + quoted(name));
}

}  // namespace qel::samplehost
