#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/QelUtilities/Mutex.h"

namespace spdlog {
class async_logger;
namespace details {
class thread_pool;
}
namespace sinks {
class sink;
}
}  // namespace spdlog

namespace qel::log {

/// The messages that are waiting to be written to the sinks. A thread of the queue writes them, so
/// a stalled sink blocks no other thread. If the queue is full, the oldest message is dropped.
/// Thread-safe.
class LogQueue {
 public:
  using Sinks = std::vector<std::shared_ptr<spdlog::sinks::sink>>;

  /// The queue is never destroyed, because its destructor would wait for a thread that may be
  /// stalled.
  static LogQueue& instance();

  /// Sets the sinks, also for queued messages, and the lowest level that is logged.
  void setSinks(Sinks sinks, int lowestLevel);
  /// Queues a message of the logger `name`. The first message starts the thread. Throws if
  /// allocation fails or if the thread cannot start.
  void add(const std::string& name, int level, const std::string& message);
  /// See `LogManager::flush`.
  bool flush(std::chrono::milliseconds patience);
  /// See `LogManager::dropped`.
  std::size_t dropped();

  ~LogQueue() = delete;
  LogQueue(const LogQueue&) = delete;
  LogQueue& operator=(const LogQueue&) = delete;

 private:
  class Writer;
  /// The sinks for one message, and the number of messages that were dropped before it.
  struct Writing {
    std::shared_ptr<const Sinks> sinks;
    std::size_t dropped;
  };

  LogQueue();
  void start() QEL_REQUIRES(mutex_);
  void beginAnew() QEL_REQUIRES(mutex_);
  Writing beginWriting();
  void endWriting();

  std::atomic<int> lowestLevel_ = 0;
  const std::shared_ptr<spdlog::async_logger> worker_;
  utilities::Mutex mutex_;
  utilities::Condition written_;
  std::shared_ptr<const Sinks> sinks_ QEL_GUARDED_BY(mutex_);
  /// Null until the thread starts. Never destroyed.
  spdlog::details::thread_pool* threads_ QEL_GUARDED_BY(mutex_) = nullptr;
  std::uint64_t messagesAdded_ QEL_GUARDED_BY(mutex_) = 0;
  std::uint64_t messagesWritten_ QEL_GUARDED_BY(mutex_) = 0;
  std::size_t dropsReported_ QEL_GUARDED_BY(mutex_) = 0;
};

}  // namespace qel::log
