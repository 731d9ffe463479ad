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
  /// Creates an event with these details.
  explicit BaseEventItemWithDetail(std::map<std::string, std::string> details = {});

  /// Adds a detail. If the key already exists, its value is kept.
  void addDetail(const std::string& key, const std::string& value);

  std::map<std::string, std::string> getDetails() const override;

 protected:
  /// For a derived class that does not override `getDetails`. The class passes its own type, so
  /// that its objects are rendered without copying the map. Copying a small map takes longer than
  /// rendering it. Objects of classes that derive from that class are rendered from a copy.
  explicit BaseEventItemWithDetail(const std::type_info& type,
                                   std::map<std::string, std::string> details = {});

 private:
  const std::map<std::string, std::string>* storedDetails() const final;

  const std::type_info* type_;
  std::map<std::string, std::string> details_;
};

}  // namespace qel::log::analytics::items
