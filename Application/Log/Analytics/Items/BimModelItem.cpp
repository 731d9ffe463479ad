#include "Application/Log/Analytics/Items/BimModelItem.h"

namespace qel::log::analytics::items {

std::string BimModelItem::getCategory() const { return "BimModel"; }

}  // namespace qel::log::analytics::items
