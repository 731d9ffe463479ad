#pragma once

#include <string>

#include "tools/records/Event.h"

namespace qel::report {

/// An event in words for people.
struct EventText {
  std::string what;
  std::string details;
};

/// The title and the details of an event, with the number of times if it was recorded several
/// times. The amounts of memory get a unit. A crash code is also in hexadecimal with its common
/// name, and is left out if it is 0.
EventText textOf(const records::Event& event);

/// Searches events for a text.
class TextSearch {
 public:
  /// An empty text is found everywhere.
  explicit TextSearch(const std::string& text);

  /// Whether a text of the event, as it is stored or shown, contains the searched text. Upper and
  /// lower case are equal.
  bool finds(const records::Event& event) const;

 private:
  std::string folded_;
};

}  // namespace qel::report
