#include <semaphore>
#include <thread>

namespace {

/// A host has several threads, and locks cost more there than in a process with one thread. So the
/// benchmarks and their limits run in a process with a second thread.
class OtherThread {
 public:
  OtherThread() = default;
  OtherThread(const OtherThread&) = delete;
  OtherThread& operator=(const OtherThread&) = delete;
  ~OtherThread() {
    end_.release();
    thread_.join();
  }

 private:
  std::binary_semaphore end_{0};
  std::thread thread_{[this] { end_.acquire(); }};
};

const OtherThread otherThread;

}  // namespace
