#include "Application/Log/Analytics/Items/MemoryUsageItem.h"

#include <algorithm>
#include <array>

#include "Application/Log/Analytics/Items/CatalogueText.h"
#include "host/QelUtilities/NumberText.h"

namespace qel::log::analytics::items {
namespace {

constexpr std::array<std::string_view, 2> scopeTexts{"Total", "Application"};
constexpr std::array<std::string_view, 2> phaseTexts{"Runtime", "Crashed"};

/// The whole seconds of the time after rounding to six decimals: 45000.25 gives "45000", and
/// 45000.9999999 gives "45001".
std::string keyOf(const datetime::DateTime& time) {
  std::string text = utilities::textWithSixDecimals(time.secondsSinceEpoch());
  text.erase(std::min(text.find('.'), text.size()));
  return text;
}

}  // namespace

MemoryUsageItem::MemoryUsageItem(Scope scope, Phase phase) : scope_(scope), phase_(phase) {}

void MemoryUsageItem::addDetailedMemoryUsage(
    const std::map<datetime::DateTime, unsigned long long>& readings) {
  readings_.insert(readings.begin(), readings.end());
}

std::string MemoryUsageItem::getCategory() const { return "MemoryUsage"; }

std::string MemoryUsageItem::getSubCategory() const { return textOf(scopeTexts, scope_, ""); }

std::string MemoryUsageItem::getEvent() const { return textOf(phaseTexts, phase_, ""); }

std::map<std::string, std::string> MemoryUsageItem::getDetails() const {
  auto details = BaseEventItemWithDetail::getDetails();
  for (const auto& [time, amount] : readings_) {
    details.emplace(keyOf(time), std::to_string(amount));
  }
  return details;
}

}  // namespace qel::log::analytics::items
