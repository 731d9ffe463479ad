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

/// Messages on their way to the sinks. A thread of its own writes them, so that a sink that stalls
/// holds up nobody else. When too many wait, the oldest is dropped. Any thread may call.
class LogQueue {
 public:
  using Sinks = std::vector<std::shared_ptr<spdlog::sinks::sink>>;

  /// Never destroyed: that would join a thread that may be stalled.
  static LogQueue& instance();

  /// Where messages go from now on, also those that wait, and the level that they need for it.
  void setSinks(Sinks sinks, int lowestLevel);
  /// Queues a message of the logger of this name. The first one of a process starts the thread.
  /// Throws when there is no memory or no thread to be had.
  void add(const std::string& name, int level, const std::string& message);
  /// See `LogManager::flush`.
  bool flush(std::chrono::milliseconds patience);

  ~LogQueue() = delete;
  LogQueue(const LogQueue&) = delete;
  LogQueue& operator=(const LogQueue&) = delete;

 private:
  class Writer;
  /// What a message is written with: the sinks, and how many were dropped before it.
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
