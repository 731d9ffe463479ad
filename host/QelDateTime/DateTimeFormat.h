#pragma once

#include <string>

#include "host/QelDateTime/DateTime.h"

namespace qel::datetime {

/// Turns moments into text in one fixed format.
class DateTimeFormat {
 public:
  /// The known formats; their numbers are fixed.
  enum class SpecialFormat {
    /// UTC with milliseconds, cut and not rounded, after RFC 3339: "2026-11-21T09:30:05.123Z".
    UtcMilliseconds = 2
  };

  /// With a number that is no format, every text is empty.
  explicit DateTimeFormat(SpecialFormat format) : format_(format) {}

  /// The text of `time`. Years beyond 0000 to 9999 are brought into that range. It has to be
  /// cheap: every record that is stored is given such a text.
  std::string toString(const DateTime& time) const;

 private:
  SpecialFormat format_;
};

}  // namespace qel::datetime
