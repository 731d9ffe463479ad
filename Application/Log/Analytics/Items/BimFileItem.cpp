#include "Application/Log/Analytics/Items/BimFileItem.h"

namespace qel::log::analytics::items {

std::string BimFileItem::getCategory() const { return "BimFile"; }

}  // namespace qel::log::analytics::items
