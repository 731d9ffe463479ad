#pragma once

#include <cstdint>

#include <kainjow/mustache.hpp>

namespace qel::support {

/// The session's time from left to right, shared by all drawings of a page.
class TimeAxis {
 public:
  static constexpr double width = 960;  ///< of a drawing, in its own units
  static constexpr double left = 180;   ///< where the session begins
  static constexpr double right = width - 36;

  TimeAxis(std::int64_t firstMs, std::int64_t lastMs);

  double x(std::int64_t ms) const;
  /// Where clock times stand, at midnight dates: a list of "x" and "text".
  kainjow::mustache::data marks() const;

 private:
  const std::int64_t first_;
  const std::int64_t last_;
};

}  // namespace qel::support
