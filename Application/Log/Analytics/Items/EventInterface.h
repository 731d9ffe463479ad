#pragma once

#include <map>
#include <string>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// An event, described from the general to the particular. Empty texts and an empty map are not
/// rendered, except for the category.
class QEL_ANALYTICS_EXPORT EventInterface {
 public:
  virtual ~EventInterface() = default;

  /// The part of the program, such as "Project".
  virtual std::string getCategory() const = 0;
  /// What happened in it, such as "Opened".
  virtual std::string getSubCategory() const = 0;
  /// The particular object or action: a fixed text, or a text of the host such as the name of a
  /// project.
  virtual std::string getEvent() const = 0;
  /// Further facts by name. Numbers and truth values are texts, too.
  virtual std::map<std::string, std::string> getDetails() const = 0;
};

}  // namespace qel::log::analytics::items
