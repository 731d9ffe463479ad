#include "Application/Log/Analytics/Items/BaseEventItemWithDetail.h"

#include <utility>

namespace qel::log::analytics::items {

BaseEventItemWithDetail::BaseEventItemWithDetail(std::map<std::string, std::string> details)
    : BaseEventItemWithDetail(typeid(void), std::move(details)) {}

BaseEventItemWithDetail::BaseEventItemWithDetail(const std::type_info& type,
                                                 std::map<std::string, std::string> details)
    : type_(&type), details_(std::move(details)) {}

void BaseEventItemWithDetail::addDetail(const std::string& key, const std::string& value) {
  details_.emplace(key, value);
}

std::map<std::string, std::string> BaseEventItemWithDetail::getDetails() const { return details_; }

const std::map<std::string, std::string>* BaseEventItemWithDetail::storedDetails() const {
  return typeid(*this) == *type_ ? &details_ : nullptr;
}

}  // namespace qel::log::analytics::items
