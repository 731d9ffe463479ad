#include "tools/support/DelayedInterruption.h"

#include <array>
#include <csignal>

#include "host/QelUtilities/Exception.h"

namespace qel::support {
namespace {

constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP};

}  // namespace

struct DelayedInterruption::State {
  sigset_t signalsBefore;
};

DelayedInterruption::DelayedInterruption() : state_(std::make_unique<State>()) {
  sigset_t ending;
  sigemptyset(&ending);
  for (const int signal : endingSignals) {
    sigaddset(&ending, signal);
  }
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
    if (sigismember(&waiting, signal) == 1) {
      throw qel::exception("interrupted");
    }
  }
}

}  // namespace qel::support
