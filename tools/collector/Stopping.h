#pragma once

#include <csignal>
#include <thread>

#include "host/QelUtilities/Mutex.h"

namespace qel::collector {

/// Blocks SIGHUP in the calling thread and in all threads that it starts, and SIGINT and SIGTERM
/// after `blockStop`. Until then they end the process.
class Signals {
 public:
  Signals();

  void blockStop();

  /// Waits for the next of these signals and returns it.
  int wait() const;

 private:
  sigset_t signals_{};
};

/// Ends the process if this object still exists after 4.5 s, because the disk or a client holds it
/// up. No package whose storage was confirmed is lost.
class StopDeadline {
 public:
  StopDeadline() = default;
  StopDeadline(const StopDeadline&) = delete;
  StopDeadline& operator=(const StopDeadline&) = delete;
  ~StopDeadline();

 private:
  void watch();

  utilities::Mutex mutex_;
  utilities::Condition over_;
  bool isOver_ QEL_GUARDED_BY(mutex_) = false;
  std::thread thread_{[this] { watch(); }};
};

}  // namespace qel::collector
