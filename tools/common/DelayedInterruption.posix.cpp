#include "tools/common/DelayedInterruption.h"

#include <array>
#include <csignal>

#include "host/QelUtilities/Exception.h"

namespace qel::tools {
namespace {

constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP};

bool isIgnored(int signal) {
  struct sigaction action {};
  sigaction(signal, nullptr, &action);
  return action.sa_handler == SIG_IGN;
}

sigset_t endingSet() {
  sigset_t ending;
  sigemptyset(&ending);
  for (const int signal : endingSignals) {
    sigaddset(&ending, signal);
  }
  return ending;
}

}  // namespace

struct DelayedInterruption::State {
  sigset_t signalsBefore;
};

DelayedInterruption::DelayedInterruption() : state_(std::make_unique<State>()) {
  const sigset_t ending = endingSet();
  pthread_sigmask(SIG_BLOCK, &ending, &state_->signalsBefore);
}

DelayedInterruption::~DelayedInterruption() {
  pthread_sigmask(SIG_SETMASK, &state_->signalsBefore, nullptr);
}

void DelayedInterruption::check() {
  sigset_t waiting;
  sigemptyset(&waiting);
  sigpending(&waiting);
  for (const int signal : endingSignals) {
    // Linux keeps a blocked signal pending even if it is ignored, as HUP is after nohup(1).
    if (sigismember(&waiting, signal) == 1 && !isIgnored(signal)) {
      throw qel::exception("interrupted");
    }
  }
}

bool DelayedInterruption::comesWithin(std::chrono::milliseconds time) {
  const sigset_t ending = endingSet();
  const timespec limit{time.count() / 1000, time.count() % 1000 * 1'000'000};
  const int signal = sigtimedwait(&ending, nullptr, &limit);
  return signal > 0 && !isIgnored(signal);
}

}  // namespace qel::tools
