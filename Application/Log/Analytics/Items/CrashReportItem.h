#pragma once

#include <map>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItem.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// A crash report was created. The event is the text of the report. Category "Application",
/// subcategory "Crash Report", no details. The client never creates this item itself.
class QEL_ANALYTICS_EXPORT CrashReportItem : public BaseEventItem {
 public:
  /// If `text` is empty, the event is omitted.
  explicit CrashReportItem(std::string text);

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;
  std::map<std::string, std::string> getDetails() const override;

 private:
  std::string text_;
};

}  // namespace qel::log::analytics::items
