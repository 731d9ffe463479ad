#pragma once

#include <map>
#include <string>
#include <typeinfo>

#include "Application/Log/Analytics/Items/BaseEventItem.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// An event with a map of details.
class QEL_ANALYTICS_EXPORT BaseEventItemWithDetail : public BaseEventItem {
 public:
  /// Starts with these details, or with none.
  explicit BaseEventItemWithDetail(std::map<std::string, std::string> details = {});

  /// Inserts a detail. A key that exists keeps its value.
  void addDetail(const std::string& key, const std::string& value);

  std::map<std::string, std::string> getDetails() const override;

 protected:
  /// For a class that does not override `getDetails`. It passes its own type, and its objects are
  /// rendered without a copy of the map. For a small map the copy takes longer than the rendering.
  /// Objects of derived classes are rendered with the copy.
  explicit BaseEventItemWithDetail(const std::type_info& type,
                                   std::map<std::string, std::string> details = {});

 private:
  const std::map<std::string, std::string>* storedDetails() const final;

  const std::type_info* type_;
  std::map<std::string, std::string> details_;
};

}  // namespace qel::log::analytics::items
