#include <semaphore>
#include <thread>

namespace {

/// Like a host, the process that measures has more than one thread, since every lock is dearer then
/// than in a process of one thread: on our side, and on that of the limits as well.
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
