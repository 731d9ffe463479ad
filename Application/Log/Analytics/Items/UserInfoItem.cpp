#include "Application/Log/Analytics/Items/UserInfoItem.h"

#include "host/QelPlatformWindows/SystemInformation.h"

namespace qel::log::analytics::items {

std::string UserInfoItem::getCategory() const { return "User"; }

std::string UserInfoItem::getSubCategory() const { return {}; }

std::string UserInfoItem::getEvent() const { return {}; }

std::map<std::string, std::string> UserInfoItem::getDetails() const {
  return {{"Username", platform::windows::SystemInformation::getUserName()}};
}

}  // namespace qel::log::analytics::items
