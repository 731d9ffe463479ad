#include <semaphore>
#include <thread>

namespace {

/// Keeps a second thread running during the benchmarks and their limits. A host has several
/// threads, and locks cost more there than in a process with one thread.
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
