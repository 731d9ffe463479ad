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

void addUnlessEmpty(json::JsonObject& json, std::string_view key,
                    const std::map<std::string, std::string>& values) {
  if (!values.empty()) {
    json.addStringMap(key, values);
  }
}

}  // namespace

std::string BaseEventItem::toJson() const {
  json::JsonObject json;
  json.addString("Category", getCategory());
  addUnlessEmpty(json, "Subcategory", getSubCategory());
  addUnlessEmpty(json, "Event", getEvent());
  addOrigin(json);
  if (const auto* const stored = storedDetails()) {
    addUnlessEmpty(json, "Details", *stored);
  } else {
    addUnlessEmpty(json, "Details", getDetails());
  }
  return std::move(json).toString();
}

}  // namespace qel::log::analytics::items
