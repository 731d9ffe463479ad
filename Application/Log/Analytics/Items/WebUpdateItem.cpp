#include "Application/Log/Analytics/Items/WebUpdateItem.h"

namespace qel::log::analytics::items {

WebUpdateItem::WebUpdateItem(std::uint64_t success, std::uint64_t corrupt)
    : success_(success), corrupt_(corrupt) {}

std::string WebUpdateItem::getCategory() const { return "WebUpdate"; }

std::string WebUpdateItem::getSubCategory() const { return "Reports"; }

std::string WebUpdateItem::getEvent() const { return {}; }

std::map<std::string, std::string> WebUpdateItem::getDetails() const {
  return {{"success", std::to_string(success_)}, {"corrupt package", std::to_string(corrupt_)}};
}

}  // namespace qel::log::analytics::items
