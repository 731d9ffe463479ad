#pragma once

#include <map>
#include <string>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// An event, described from the general to the particular. Empty strings and an empty map are not
/// rendered. Only the category is always rendered.
class QEL_ANALYTICS_EXPORT EventInterface {
 public:
  virtual ~EventInterface() = default;

  /// The part of the program in which the event occurred, such as "Project".
  virtual std::string getCategory() const = 0;
  /// What happened in that part, such as "Opened".
  virtual std::string getSubCategory() const = 0;
  /// The particular object or action. This is a fixed string or a string from the host, such as the
  /// name of a project.
  virtual std::string getEvent() const = 0;
  /// Further facts, keyed by name. Numbers and Boolean values are also strings.
  virtual std::map<std::string, std::string> getDetails() const = 0;
};

}  // namespace qel::log::analytics::items
