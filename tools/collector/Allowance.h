#pragma once

#include <algorithm>
#include <chrono>

namespace qel::collector {

/// A token bucket: allows an amount a second, and bursts.
///
/// An amount is allowed while the bucket is not overdrawn, so an amount of any size passes sooner
/// or later.
class Allowance {
 public:
  using Seconds = std::chrono::duration<double>;
  using Time = std::chrono::time_point<std::chrono::steady_clock, Seconds>;

  /// How long to wait before anything may be taken; zero if it may be taken now.
  Seconds delay(Time now, Seconds burst) const { return std::max(Seconds{0}, paid_ - burst - now); }

  void take(double amount, double amountPerSecond, Time now) {
    paid_ = std::max(paid_, now) + Seconds(amount / amountPerSecond);
  }

 private:
  Time paid_{};  ///< when the rate will have covered all that was taken
};

}  // namespace qel::collector
