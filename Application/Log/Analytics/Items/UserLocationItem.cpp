#include "Application/Log/Analytics/Items/UserLocationItem.h"

namespace qel::log::analytics::items {

std::string UserLocationItem::getCategory() const { return "User"; }

std::string UserLocationItem::getSubCategory() const { return "Location"; }

std::string UserLocationItem::getEvent() const { return {}; }

std::map<std::string, std::string> UserLocationItem::getDetails() const {
  // The server knows this id and puts the location in its place.
  return {{"set-on-backend", "3F0A9C12-7B4E-4D21-9E6A-5C8B2D7F1A04"}};
}

}  // namespace qel::log::analytics::items
