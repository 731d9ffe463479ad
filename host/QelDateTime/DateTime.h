#pragma once

#include <compare>

namespace qel::datetime {

/// A moment as one double: the seconds since 1970-01-01 00:00 UTC, with a fraction. Leap seconds
/// are not counted.
class DateTime {
 public:
  /// The epoch, or the moment `secondsSinceEpoch` seconds after the epoch. A negative number means
  /// a moment before the epoch.
  /// @{
  DateTime() = default;
  explicit DateTime(double secondsSinceEpoch) : seconds_(secondsSinceEpoch) {}
  /// @}

  /// Sets this to the system clock's current time.
  void vSetNow();

  /// The system clock's current time.
  static DateTime now() {
    DateTime time;
    time.vSetNow();
    return time;
  }

  /// The seconds since the epoch; negative if the moment is before the epoch.
  double secondsSinceEpoch() const { return seconds_; }

  friend auto operator<=>(const DateTime&, const DateTime&) = default;

 private:
  double seconds_ = 0;
};

}  // namespace qel::datetime
