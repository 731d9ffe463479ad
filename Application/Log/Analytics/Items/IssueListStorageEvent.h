#pragma once

#include <cstdint>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItemWithDetail.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// Issues were added to the issue list or removed from it. Category "IssueListStorage", subcategory
/// "Issue".
class QEL_ANALYTICS_EXPORT IssueListStorageEvent : public BaseEventItemWithDetail {
 public:
  /// The event is the enumerator's name, or "Unknown" for any other value.
  enum class Change : std::uint32_t { Added, Removed, RemovedAll };

  /// Creates an event with no details.
  explicit IssueListStorageEvent(Change change);

  /// Changes the event. Used for a copy of an item, to report a later change of the same issue.
  void setChange(Change change) { change_ = change; }

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;

 private:
  Change change_;
};

}  // namespace qel::log::analytics::items
