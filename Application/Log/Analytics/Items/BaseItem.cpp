#include "Application/Log/Analytics/Items/BaseItem.h"

#include <atomic>

#include "host/QelDateTime/DateTimeFormat.h"
#include "host/QelJson/JsonObject.h"

namespace qel::log::analytics::items {
namespace {

struct Session {
  Guid id;
  std::string text = id.toString(false);
};

// A worker may render items while the host sets the IDs, and while the process exits. Therefore a
// value that has been returned is never changed or destroyed.
std::atomic<const std::string*>& installationId() {
  static const auto* const none = new std::string;
  static std::atomic<const std::string*> current{none};
  return current;
}

std::atomic<const Session*>& session() {
  static const auto* const none = new Session;
  static std::atomic<const Session*> current{none};
  return current;
}

}  // namespace

void BaseItem::setInstallationId(const std::string& id) {
  if (installationId().load()->empty() && !id.empty()) {
    installationId() = new std::string(id);
  }
}

void BaseItem::setSessionId(const Guid& id) {
  if (session().load()->id.isNull() && !id.isNull()) {
    session() = new Session{id};
  }
}

const std::string& BaseItem::getInstallationId() const { return *installationId().load(); }

const Guid& BaseItem::getSessionId() const { return session().load()->id; }

std::string BaseItem::getDateTimeAsString() const {
  using datetime::DateTimeFormat;
  return DateTimeFormat(DateTimeFormat::SpecialFormat::UtcMilliseconds).toString(getTime());
}

void BaseItem::addOrigin(json::JsonObject& json) const {
  json.addString("InstallationId", getInstallationId())
      .addString("SessionId", session().load()->text)
      .addString("Timestamp", getDateTimeAsString());
}

}  // namespace qel::log::analytics::items
