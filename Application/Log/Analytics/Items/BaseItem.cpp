#include "Application/Log/Analytics/Items/BaseItem.h"

#include "host/QelDateTime/DateTimeFormat.h"
#include "host/QelJson/JsonObject.h"

namespace qel::log::analytics::items {
namespace {

// Never destroyed: a worker thread may still render items while the process exits.
std::string& installationId() {
  static auto* const id = new std::string;
  return *id;
}

struct Session {
  Guid id;
  std::string text = id.toString(false);
};

Session& session() {
  static auto* const session = new Session;
  return *session;
}

}  // namespace

void BaseItem::setInstallationId(const std::string& id) {
  if (installationId().empty()) {
    installationId() = id;
  }
}

void BaseItem::setSessionId(const Guid& id) {
  if (session().id.isNull()) {
    session() = {id, id.toString(false)};
  }
}

const std::string& BaseItem::getInstallationId() const { return installationId(); }

const Guid& BaseItem::getSessionId() const { return session().id; }

std::string BaseItem::getDateTimeAsString() const {
  using datetime::DateTimeFormat;
  return DateTimeFormat(DateTimeFormat::SpecialFormat::UtcMilliseconds).toString(getTime());
}

void BaseItem::addOrigin(json::JsonObject& json) const {
  json.addString("InstallationId", getInstallationId())
      .addString("SessionId", session().text)
      .addString("Timestamp", getDateTimeAsString());
}

}  // namespace qel::log::analytics::items
