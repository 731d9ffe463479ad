#pragma once

#include <cstdint>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItemWithDetail.h"
#include "QelAnalyticsExport.h"
#include "host/QelAssert/AssertInfo.h"

namespace qel::log::analytics::items {

/// The host application started, stopped, crashed or failed an assertion. Category "Application".
/// The host chooses the text of the event.
class QEL_ANALYTICS_EXPORT ApplicationItem : public BaseEventItemWithDetail {
 public:
  /// The subcategory is the enumerator's name, or empty for any other value.
  enum class Type : std::uint32_t { Started, Stopped, Crashed, Asserted };

  /// For every type, the detail "Exception Code" is `exceptionCode` as an unsigned number.
  ApplicationItem(const std::string& event, const Type& type, int exceptionCode);

  /// An item for a failed assertion; `info` becomes the details.
  ApplicationItem(const std::string& event, const assert::AssertInfo& info);

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;

 private:
  std::string event_;
  Type type_;
};

}  // namespace qel::log::analytics::items
