#include "tools/sample-host/Interruption.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <thread>

namespace qel::samplehost {
namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

extern "C" void interrupt(int signal) {
  interrupted = true;
  std::signal(signal, SIG_DFL);
}

}  // namespace

void catchInterruptions() {
  std::signal(SIGINT, interrupt);
  std::signal(SIGTERM, interrupt);
}

bool isInterrupted() { return interrupted; }

/// In slices, since a signal handler may wake nobody.
void waitUnlessInterrupted(std::chrono::duration<double> time) {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::duration<double> slice{0.05};
  const auto begin = Clock::now();
  for (auto left = time; left.count() > 0 && !interrupted; left = time - (Clock::now() - begin)) {
    std::this_thread::sleep_for(std::min(left, slice));
  }
}

}  // namespace qel::samplehost
