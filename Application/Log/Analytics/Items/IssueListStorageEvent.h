#pragma once

#include <cstdint>
#include <string>

#include "Application/Log/Analytics/Items/BaseEventItemWithDetail.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// The issue list got or lost issues. Category "IssueListStorage", subcategory "Issue".
class QEL_ANALYTICS_EXPORT IssueListStorageEvent : public BaseEventItemWithDetail {
 public:
  /// The event in these words, "Unknown" for any other value.
  enum class Change : std::uint32_t { Added, Removed, RemovedAll };

  /// Has no details yet.
  explicit IssueListStorageEvent(Change change);

  /// For a copy of an item that reports a later change of the same issue.
  void setChange(Change change) { change_ = change; }

  std::string getCategory() const override;
  std::string getSubCategory() const override;
  std::string getEvent() const override;

 private:
  Change change_;
};

}  // namespace qel::log::analytics::items
