#include "Application/Log/Analytics/Items/PresentationItem.h"

namespace qel::log::analytics::items {

std::string PresentationItem::getCategory() const { return "Presentation"; }

}  // namespace qel::log::analytics::items
