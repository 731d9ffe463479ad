#include "Application/Log/Analytics/Items/BaseEventItemWithDetail.h"

#include <utility>

namespace qel::log::analytics::items {

BaseEventItemWithDetail::BaseEventItemWithDetail(std::map<std::string, std::string> details)
    : details_(std::move(details)) {}

void BaseEventItemWithDetail::addDetail(const std::string& key, const std::string& value) {
  details_.emplace(key, value);
}

std::map<std::string, std::string> BaseEventItemWithDetail::getDetails() const { return details_; }

void BaseEventItemWithDetail::addDetailsTo(json::JsonObject& json) const {
  addDetails(json, details_);
}

}  // namespace qel::log::analytics::items
