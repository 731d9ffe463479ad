#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItem.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// Whether the focus came or went: the subcategory in these words, none for any other value.
enum class FocusKind : std::uint32_t { Focused, Unfocused };

/// Something that is edited in a window of its own got or lost the focus. Subclasses say what.
/// There are no details.
class QEL_ANALYTICS_EXPORT FocusItem : public BaseEventItem {
 public:
  /// `name` is the name of what got or lost the focus.
  FocusItem(std::string name, FocusKind kind);

  std::string getSubCategory() const override;
  std::string getEvent() const override;
  std::map<std::string, std::string> getDetails() const override;

 private:
  std::string name_;
  FocusKind kind_;
};

}  // namespace qel::log::analytics::items
