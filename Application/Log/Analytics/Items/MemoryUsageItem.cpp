#include "Application/Log/Analytics/Items/MemoryUsageItem.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

#include "Application/Log/Analytics/Items/CatalogueText.h"

namespace qel::log::analytics::items {
namespace {

constexpr std::array<std::string_view, 2> scopeTexts{"Total", "Application"};
constexpr std::array<std::string_view, 2> phaseTexts{"Runtime", "Crashed"};

/// What stands before the decimal point when the time is printed with six decimals, as the C
/// library's "%f" does: 45000.25 yields "45000", and 45000.9999999 is rounded to "45001". Unlike
/// "%f" the result does not depend on the locale.
std::string keyOf(const datetime::DateTime& time) {
  constexpr int decimals = 6;
  constexpr std::size_t signAndPoint = 2;
  std::array<char, std::numeric_limits<double>::max_exponent10 + 1 + decimals + signAndPoint>
      text{};
  const auto [end, error] =
      std::to_chars(text.data(), text.data() + text.size(), time.secondsSinceEpoch(),
                    std::chars_format::fixed, decimals);
  return {text.data(), std::find(text.data(), end, '.')};
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
