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

  /// The part of the program that it belongs to, such as "Project".
  virtual std::string getCategory() const = 0;
  /// What happened there, such as "Opened".
  virtual std::string getSubCategory() const = 0;
  /// The particular thing: a fixed text, or one of the host's, such as the project's name.
  virtual std::string getEvent() const = 0;
  /// Further facts by their names, numbers and truth values as texts too.
  virtual std::map<std::string, std::string> getDetails() const = 0;
};

}  // namespace qel::log::analytics::items
