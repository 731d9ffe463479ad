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
    // Linux keeps a blocked signal pending even if it is ignored, as HUP is after nohup(1).
    if (sigismember(&waiting, signal) == 1 && !isIgnored(signal)) {
      throw qel::exception("interrupted");
    }
  }
}

}  // namespace qel::tools
