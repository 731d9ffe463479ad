#include "Application/Log/Analytics/Items/SaveItem.h"

#include <utility>

namespace qel::log::analytics::items {

SaveItem::SaveItem(std::string kind, std::string event)
    : BaseEventItemWithDetail(typeid(SaveItem)), kind_(std::move(kind)), event_(std::move(event)) {}

std::string SaveItem::getCategory() const { return "Save"; }

std::string SaveItem::getSubCategory() const { return kind_; }

std::string SaveItem::getEvent() const { return event_; }

}  // namespace qel::log::analytics::items
