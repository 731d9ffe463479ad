#include "Application/Log/Analytics/Items/GeneralEventItem.h"

#include <utility>

namespace qel::log::analytics::items {

GeneralEventItem::GeneralEventItem(std::shared_ptr<const HostEvent> event)
    : event_(std::move(event)) {}

std::string GeneralEventItem::getCategory() const {
  return event_ ? event_->getCategory() : std::string();
}

std::string GeneralEventItem::getSubCategory() const {
  return event_ ? event_->getSubCategory() : std::string();
}

std::string GeneralEventItem::getEvent() const {
  return event_ ? event_->getEvent() : std::string();
}

std::map<std::string, std::string> GeneralEventItem::getDetails() const {
  return event_ ? event_->getDetails() : std::map<std::string, std::string>();
}

}  // namespace qel::log::analytics::items
