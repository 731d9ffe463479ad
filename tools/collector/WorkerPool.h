#pragma once

#include <cstddef>
#include <functional>
#include <semaphore>
#include <utility>

#include <httplib.h>

namespace qel::collector {

/// The HTTP library's workers, but for few connections waiting: each takes a file descriptor, and
/// the store needs some too. More are left to the system, which turns them away in the end.
class WorkerPool : public httplib::TaskQueue {
 public:
  static constexpr std::ptrdiff_t mostWaiting = 256;

  explicit WorkerPool(std::size_t workers) : pool_(workers) {}

  /// Blocks while too many wait.
  void enqueue(std::function<void()> serve) override {
    places_.acquire();
    pool_.enqueue([this, serve = std::move(serve)] {
      places_.release();
      serve();
    });
  }

  void shutdown() override { pool_.shutdown(); }

 private:
  std::counting_semaphore<mostWaiting> places_{mostWaiting};
  httplib::ThreadPool pool_;
};

}  // namespace qel::collector
