#pragma once

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <string>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"
#include "host/QelUtilities/ExitDeadline.h"

using namespace std::chrono_literals;

/// Records a signal that ends the process. A signal handler may neither lock nor allocate, so
/// another thread does the work. The handler uses only functions that POSIX allows there.
class CrashRecorder {
 public:
  explicit CrashRecorder(qel::log::analytics::CipDatabases& databases)
      : worker_([this, &databases] { waitForCrash(databases); }) {
    active = this;
    static std::array<std::byte, 65536> stackOfHandler;
    stack_t stack{};
    stack.ss_sp = stackOfHandler.data();
    stack.ss_size = stackOfHandler.size();
    sigaltstack(&stack, nullptr);  // for a stack overflow on the calling thread
    struct sigaction action {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_ONSTACK;
    sigfillset(&action.sa_mask);
    for (const int signal : fatal) {
      sigaction(signal, &action, &previous[signal]);
    }
  }

  /// Must be destroyed before the last `join`.
  ~CrashRecorder() {
    for (const int signal : fatal) {
      sigaction(signal, &previous[signal], nullptr);
    }
    active = nullptr;
    close(wake_.writing);
    worker_.join();
    close(wake_.reading);
    close(stored_.writing);
    close(stored_.reading);
  }
  CrashRecorder(const CrashRecorder&) = delete;
  CrashRecorder& operator=(const CrashRecorder&) = delete;

 private:
  struct Pipe {
    Pipe() {
      int ends[2] = {-1, -1};
      if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category());
      }
      reading = ends[0];
      writing = ends[1];
    }
    int reading;
    int writing;
  };

  static void onSignal(int signal) {
    CrashRecorder* const recorder = active;
    if (recorder != nullptr && recorder->process_ == getpid()) {  // not in a forked process
      const auto number = static_cast<unsigned char>(signal);
      if (write(recorder->wake_.writing, &number, 1) == 1) {
        pollfd stored{recorder->stored_.reading, POLLIN, 0};
        poll(&stored, 1, 3000);
      }
    }
    sigaction(signal, &previous[signal], nullptr);
    raise(signal);  // takes effect when this handler returns
  }

  void waitForCrash(qel::log::analytics::CipDatabases& databases) {
    unsigned char signal = 0;
    ssize_t count = 0;
    do {
      count = read(wake_.reading, &signal, 1);
    } while (count == -1 && errno == EINTR);  // by a signal that the program handles
    if (count == 1) {
      qel::utilities::setExitDeadline(2s);
      qel::broadcaster::ApplicationBroadcaster::getInstance().notify(
          &qel::broadcaster::ApplicationListenerInterface::onApplicationCrashed,
          qel::broadcaster::event::ApplicationCrashEvent{{"signal " + std::to_string(signal)},
                                                         signal});
      databases.join();
      [[maybe_unused]] const auto written = write(stored_.writing, "", 1);
    }
  }

  static constexpr std::array fatal{SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV};
  static inline std::atomic<CrashRecorder*> active{nullptr};
  static inline struct sigaction previous[NSIG] {};

  const pid_t process_ = getpid();
  const Pipe wake_;
  const Pipe stored_;
  std::thread worker_;
};
