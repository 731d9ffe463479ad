#include "Application/Log/Analytics/Items/BaseEventItem.h"

#include <string_view>
#include <utility>

#include "host/QelJson/JsonObject.h"

namespace qel::log::analytics::items {
namespace {

void addUnlessEmpty(json::JsonObject& json, std::string_view key, const std::string& value) {
  if (!value.empty()) {
    json.addString(key, value);
  }
}

}  // namespace

std::string BaseEventItem::toJson() const {
  json::JsonObject json;
  json.addString("Category", getCategory());
  addUnlessEmpty(json, "Subcategory", getSubCategory());
  addUnlessEmpty(json, "Event", getEvent());
  addOrigin(json);
  addDetailsTo(json);
  return std::move(json).toString();
}

void BaseEventItem::addDetailsTo(json::JsonObject& json) const { addDetails(json, getDetails()); }

void BaseEventItem::addDetails(json::JsonObject& json,
                               const std::map<std::string, std::string>& details) {
  if (!details.empty()) {
    json.addStringMap("Details", details);
  }
}

}  // namespace qel::log::analytics::items
