#pragma once

#include <cstddef>
#include <functional>
#include <utility>

#include <httplib.h>

#include "host/QelUtilities/Mutex.h"

namespace qel::collector {

/// The HTTP library's worker threads, with a limit on the connections that wait for one. Each
/// waiting connection uses a file descriptor, and the store needs descriptors too. The operating
/// system queues additional connections, and rejects them when its queue is full.
class WorkerPool : public httplib::TaskQueue {
 public:
  static constexpr std::size_t mostWaiting = 256;

  explicit WorkerPool(std::size_t workers) : pool_(workers) {}

  /// Blocks while `mostWaiting` connections wait for a worker.
  void enqueue(std::function<void()> serve) override {
    takePlace();
    pool_.enqueue([this, serve = std::move(serve)] {
      leavePlace();
      serve();
    });
  }

  void shutdown() override { pool_.shutdown(); }

 private:
  void takePlace() {
    utilities::MutexLock lock(mutex_);
    left_.wait(lock, [this]() QEL_REQUIRES(mutex_) { return waiting_ < mostWaiting; });
    ++waiting_;
  }

  void leavePlace() {
    const utilities::MutexLock lock(mutex_);
    --waiting_;
    left_.notifyOne();
  }

  utilities::Mutex mutex_;
  utilities::Condition left_;
  std::size_t waiting_ QEL_GUARDED_BY(mutex_) = 0;
  httplib::ThreadPool pool_;
};

}  // namespace qel::collector
