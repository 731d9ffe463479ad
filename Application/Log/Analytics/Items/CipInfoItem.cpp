#include "Application/Log/Analytics/Items/CipInfoItem.h"

#include <utility>

#include "Application/Log/Analytics/Items/CatalogueText.h"

namespace qel::log::analytics::items {
namespace {

constexpr std::array<std::string_view, 3> areaTexts{"Database", "SendingItems", "InsertingItems"};
constexpr std::array<std::string_view, 2> severityTexts{"CriticalLarge", "Exception"};

}  // namespace

CipInfoItem::CipInfoItem(Area area, Severity severity, std::string message)
    : area_(area), severity_(severity), message_(std::move(message)) {}

std::string CipInfoItem::getCategory() const { return "CIP"; }

std::string CipInfoItem::getSubCategory() const { return textOf(areaTexts, area_, ""); }

std::string CipInfoItem::getEvent() const { return textOf(severityTexts, severity_, ""); }

std::map<std::string, std::string> CipInfoItem::getDetails() const {
  if (message_.empty()) {
    return {};
  }
  return {{"Message", message_}};
}

}  // namespace qel::log::analytics::items
