#pragma once

#include <chrono>
#include <string>

#include "host/QelC/qel_analytics.h"
#include "host/QelUtilities/Mutex.h"

namespace qel::c {

/// The functions of the host that a client calls. Thread-safe.
///
/// **Errors.** An exception from a function of the host counts as the default: not allowed, nothing
/// logged, no environment.
///
/// **Lifecycle.** After `close` has returned true, no function of the host runs or is called.
class Callbacks {
 public:
  explicit Callbacks(const qel_analytics_parameters& parameters);

  bool isSendingAllowed();
  bool isSupportAllowed();
  void log(int level, const std::string& logger, const std::string& message);
  /// A copy of the host's text; empty if there is none.
  std::string environment();

  /// From now on nothing is allowed.
  void denyEverything();
  /// Ends all calls. Waits at most until the deadline for those that are running. Returns whether
  /// they have returned.
  bool close(std::chrono::steady_clock::time_point deadline);

  /// Whether the calling thread is running a function of the host.
  static bool isRunningOnThisThread();

 private:
  template <typename Result, typename Call>
  Result callOr(Result fallback, Call call);
  bool enter();
  void leave();
  bool isAllowed(qel_analytics_permission permission);

  void* const context_;
  const qel_analytics_permission isSendingAllowed_;
  const qel_analytics_permission isSupportAllowed_;
  const qel_analytics_log log_;
  const qel_analytics_environment environment_;
  utilities::Mutex mutex_;
  utilities::Condition left_;
  bool isDenying_ QEL_GUARDED_BY(mutex_) = false;
  bool isClosed_ QEL_GUARDED_BY(mutex_) = false;
  int running_ QEL_GUARDED_BY(mutex_) = 0;
};

}  // namespace qel::c
