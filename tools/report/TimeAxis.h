#pragma once

#include <cstdint>

#include <kainjow/mustache.hpp>

namespace qel::report {

/// The horizontal time axis, which all drawings of a page share. A position is a percentage of a
/// drawing's width, so that drawings fit into every page without shrinking their texts.
class TimeAxis {
 public:
  static constexpr double right = 100;

  TimeAxis(std::int64_t firstMs, std::int64_t lastMs);

  double x(std::int64_t ms) const;
  /// Template data of the grid lines: a list of "x" and "text". The text is a time of day, or the
  /// date at midnight.
  kainjow::mustache::data marks() const;

 private:
  const std::int64_t first_;
  const std::int64_t last_;
};

}  // namespace qel::report
