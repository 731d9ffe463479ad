#pragma once

#include <string>

#include "host/QelDateTime/DateTime.h"

namespace qel::datetime {

/// Formats moments as text.
class DateTimeFormat {
 public:
  /// The supported formats. Their numeric values never change.
  enum class SpecialFormat {
    /// UTC in the format of RFC 3339, truncated to milliseconds: "2026-11-21T09:30:05.123Z".
    UtcMilliseconds = 2
  };

  /// If `format` is not an enumerator, `toString` returns an empty string.
  explicit DateTimeFormat(SpecialFormat format) : format_(format) {}

  /// Formats `time`. A moment outside the years 0000 to 9999 becomes the nearest moment in these
  /// years. Must be fast, because it is called for every stored record.
  std::string toString(const DateTime& time) const;

 private:
  SpecialFormat format_;
};

}  // namespace qel::datetime
