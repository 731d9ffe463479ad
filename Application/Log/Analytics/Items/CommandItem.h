#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItemWithDetail.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// A command of the host application started or ended. The event is the text of the command.
/// Category "Command".
class QEL_ANALYTICS_EXPORT CommandItem : public BaseEventItemWithDetail {
 public:
  /// The subcategory is the enumerator's name, or empty for any other value.
  enum class State : std::uint32_t { Started, Accepted, Cancelled };

  /// `details` come from the host. A detail that is added later does not replace one with the same
  /// key.
  CommandItem(std::string command, State state, std::map<std::string, std::string> details);

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;

 private:
  std::string command_;
  State state_;
};

}  // namespace qel::log::analytics::items
