#pragma once

#include <cstdint>
#include <string>

namespace qel::support {

/// The session's time from left to right, shared by all drawings of a page.
class TimeAxis {
 public:
  static constexpr double width = 960;  ///< of a drawing, in its own units
  static constexpr double left = 180;   ///< where the session begins
  static constexpr double right = width - 36;

  TimeAxis(std::int64_t firstMs, std::int64_t lastMs);

  double x(std::int64_t ms) const;
  /// Lines with clock times, at midnight with dates (SVG), for a drawing that is used between two
  /// heights.
  std::string grid(double top, double bottom) const;

 private:
  const std::int64_t first_;
  const std::int64_t last_;
};

}  // namespace qel::support
