#include "Application/Log/Analytics/Items/UserItems.h"

#include "host/QelPlatformWindows/SystemInformation.h"

namespace qel::log::analytics::items {

std::string UserInfoItem::getCategory() const { return "User"; }

std::string UserInfoItem::getSubCategory() const { return {}; }

std::string UserInfoItem::getEvent() const { return {}; }

std::map<std::string, std::string> UserInfoItem::getDetails() const {
  return {{"Username", platform::windows::SystemInformation::getUserName()}};
}

std::string UserLocationItem::getCategory() const { return "User"; }

std::string UserLocationItem::getSubCategory() const { return "Location"; }

std::string UserLocationItem::getEvent() const { return {}; }

std::map<std::string, std::string> UserLocationItem::getDetails() const {
  // The server replaces this GUID with the location.
  return {{"set-on-backend", "3F0A9C12-7B4E-4D21-9E6A-5C8B2D7F1A04"}};
}

}  // namespace qel::log::analytics::items
