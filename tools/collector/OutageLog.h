#pragma once

#include <chrono>
#include <exception>
#include <optional>

namespace qel::collector {

/// Logs once when a store begins to fail and once when it has ceased to.
///
/// **Threads.** Used by one thread.
class OutageLog {
 public:
  /// Adds the result of a transaction, or of a check, which is one without packages. If only
  /// packages have failed, perhaps because they are large, a check is no sign of the end.
  void add(const std::exception_ptr& failure, bool hasPackages);

 private:
  std::optional<std::chrono::steady_clock::time_point> begin_;  ///< of the outage that was logged
  bool hasCheckFailed_ = false;
};

}  // namespace qel::collector
