#include "tools/sample-host/Interruption.h"

#include <csignal>
#include <thread>
#include <utility>

#include <unistd.h>

namespace qel::samplehost {

void catchInterruptions(std::function<void()> reaction) {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::thread([signals, reaction = std::move(reaction)] {
    int signal = 0;
    sigwait(&signals, &signal);
    interrupt();
    reaction();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    for (;;) {
      pause();  // the only thread that the second signal can reach
    }
  }).detach();
}

}  // namespace qel::samplehost
