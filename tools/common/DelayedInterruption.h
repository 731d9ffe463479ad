#pragma once

#include <chrono>
#include <memory>

namespace qel::tools {

/// While an object exists, requests to end the program wait: SIGINT, SIGTERM and SIGHUP, and on
/// Windows Ctrl-C, Ctrl-Break and the closing of the console. So these requests do not leave
/// unfinished files behind. Only one thread may use this class; objects may be nested.
class DelayedInterruption {
 public:
  DelayedInterruption();
  ~DelayedInterruption();

  DelayedInterruption(const DelayedInterruption&) = delete;
  DelayedInterruption& operator=(const DelayedInterruption&) = delete;

  /// Throws `qel::exception` if a request waits. Long work should call it, because Windows
  /// terminates a program five seconds after its console was closed.
  static void check();

  /// Waits for a request. Returns whether there is one, which then does not end the program: the
  /// caller must return soon.
  static bool comesWithin(std::chrono::milliseconds time);

 private:
  struct State;
  const std::unique_ptr<State> state_;
};

}  // namespace qel::tools
