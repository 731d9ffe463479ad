#include "tools/sample-host/Interruption.h"

#include <csignal>
#include <thread>

#include <unistd.h>

namespace qel::samplehost {

void catchInterruptions(std::chrono::milliseconds exitDeadline) {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::thread([signals, exitDeadline] {
    int signal = 0;
    sigwait(&signals, &signal);
    interrupt(exitDeadline);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    for (;;) {
      pause();  // the only thread that the second signal can reach
    }
  }).detach();
}

}  // namespace qel::samplehost
