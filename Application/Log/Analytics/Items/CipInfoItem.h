#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItem.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// A report of the client about itself: its database grew too large, or storing or sending failed.
/// Category "CIP" (customer involvement programme).
class QEL_ANALYTICS_EXPORT CipInfoItem : public BaseEventItem {
 public:
  /// The operation that failed. The subcategory is the enumerator's name, or empty for any other
  /// value.
  enum class Area : std::uint32_t { Database, SendingItems, InsertingItems };
  /// Whether a limit was reached or an exception was thrown. The event is the enumerator's name, or
  /// empty for any other value.
  enum class Severity : std::uint32_t { CriticalLarge, Exception };

  /// `message` becomes the detail "Message", which is omitted if it is empty.
  CipInfoItem(Area area, Severity severity, std::string message = {});

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;
  std::map<std::string, std::string> getDetails() const override;

 private:
  Area area_;
  Severity severity_;
  std::string message_;
};

}  // namespace qel::log::analytics::items
