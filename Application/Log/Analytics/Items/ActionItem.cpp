#include "Application/Log/Analytics/Items/ActionItem.h"

#include "Application/Log/Analytics/Items/CatalogueText.h"

namespace qel::log::analytics::items {
namespace {

constexpr std::array<std::string_view, 5> areaTexts{"BCF", "Help", "Start Page", "Project Manager",
                                                    "Graphic"};

}  // namespace

// NOLINTNEXTLINE(modernize-pass-by-value): the exported signature is fixed.
ActionItem::ActionItem(const ActionArea& area, const std::string& event,
                       const std::map<std::string, std::string>& details)
    : BaseEventItemWithDetail(typeid(ActionItem), details), area_(area), event_(event) {}

std::string ActionItem::getCategory() const { return textOf(areaTexts, area_, "Unknown"); }

std::string ActionItem::getSubCategory() const { return "Action"; }

std::string ActionItem::getEvent() const { return event_; }

}  // namespace qel::log::analytics::items
