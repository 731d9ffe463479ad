#include "tools/collector/Stopping.h"

#include <chrono>
#include <csignal>
#include <cstdlib>

#include <pthread.h>
#include <unistd.h>

#include "host/QelLog/LogManager.h"

namespace qel::collector {
namespace {

constexpr std::chrono::milliseconds stopTime{4500};

}  // namespace

Signals::Signals() {
  std::signal(SIGPIPE, SIG_IGN);
  sigemptyset(&signals_);
  sigaddset(&signals_, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
}

void Signals::blockStop() {
  sigaddset(&signals_, SIGINT);
  sigaddset(&signals_, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
}

int Signals::wait() const {
  int signal = 0;
  sigwait(&signals_, &signal);
  return signal;
}

StopDeadline::~StopDeadline() {
  {
    const utilities::MutexLock lock(mutex_);
    isOver_ = true;
    over_.notifyOne();
  }
  thread_.join();
}

void StopDeadline::watch() {
  utilities::MutexLock lock(mutex_);
  if (!over_.waitUntil(lock, std::chrono::steady_clock::now() + stopTime,
                       [this]() QEL_REQUIRES(mutex_) { return isOver_; })) {
    log::LogManager::instance()
        .getLogger("qel.collector")
        ->log(log::Level::Warning, "stopped before all requests were answered");
    log::LogManager::instance().flush(std::chrono::milliseconds(200));
    ::_exit(EXIT_SUCCESS);
  }
}

}  // namespace qel::collector
