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

/// The messages that wait to be written to the sinks. A thread of the queue writes them, so a sink
/// that stalls blocks no other thread. When too many wait, the oldest is dropped. Any thread may
/// call.
class LogQueue {
 public:
  using Sinks = std::vector<std::shared_ptr<spdlog::sinks::sink>>;

  /// Never destroyed, since its destruction would wait for a thread that may stall.
  static LogQueue& instance();

  /// Sets the sinks, also for messages that wait, and the lowest level that is logged.
  void setSinks(Sinks sinks, int lowestLevel);
  /// Queues a message of the logger `name`. The first message starts the thread. Throws without
  /// memory or without a thread.
  void add(const std::string& name, int level, const std::string& message);
  /// See `LogManager::flush`.
  bool flush(std::chrono::milliseconds patience);

  ~LogQueue() = delete;
  LogQueue(const LogQueue&) = delete;
  LogQueue& operator=(const LogQueue&) = delete;

 private:
  class Writer;
  /// For one message: its sinks, and how many messages were dropped before it.
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
  /// Never destroyed.
  spdlog::details::thread_pool* threads_ QEL_GUARDED_BY(mutex_) = nullptr;
  std::uint64_t messagesAdded_ QEL_GUARDED_BY(mutex_) = 0;
  std::uint64_t messagesWritten_ QEL_GUARDED_BY(mutex_) = 0;
  std::size_t dropsReported_ QEL_GUARDED_BY(mutex_) = 0;
};

}  // namespace qel::log
