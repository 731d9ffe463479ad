#pragma once

#include <map>
#include <string>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// What happened, from the general to the particular. Empty texts and an empty map say nothing and
/// are not rendered, except for the category.
class QEL_ANALYTICS_EXPORT EventInterface {
 public:
  virtual ~EventInterface() = default;

  virtual std::string getCategory() const = 0;
  virtual std::string getSubCategory() const = 0;
  virtual std::string getEvent() const = 0;
  virtual std::map<std::string, std::string> getDetails() const = 0;
};

}  // namespace qel::log::analytics::items
