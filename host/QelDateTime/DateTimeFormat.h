#pragma once

#include <string>

#include "host/QelDateTime/DateTime.h"

namespace qel::datetime {

/// Formats moments as text.
class DateTimeFormat {
 public:
  /// The formats. Their numbers never change.
  enum class SpecialFormat {
    /// UTC in RFC 3339 with milliseconds, truncated: "2026-11-21T09:30:05.123Z".
    UtcMilliseconds = 2
  };

  /// For a number without a format, every text is empty.
  explicit DateTimeFormat(SpecialFormat format) : format_(format) {}

  /// The text of `time`. Moments outside the years 0000 to 9999 become the nearest one inside. Must
  /// be fast, since every stored record gets such a text.
  std::string toString(const DateTime& time) const;

 private:
  SpecialFormat format_;
};

}  // namespace qel::datetime
