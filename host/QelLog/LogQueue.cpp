#include "host/QelLog/LogQueue.h"

#include <algorithm>
#include <exception>
#include <string>
#include <utility>

#include <spdlog/async_logger.h>
#include <spdlog/details/null_mutex.h>
#include <spdlog/details/thread_pool.h>
#include <spdlog/sinks/base_sink.h>

#ifndef _WIN32
#include <csignal>

#include <pthread.h>
#endif

#include "host/QelLog/LoggerInterface.h"
#include "host/QelUtilities/ProcessEnd.h"
#include "host/QelUtilities/ScopeGuard.h"

namespace qel::log {
namespace {

using spdlog::details::log_msg;
using std::chrono::milliseconds;

/// Large enough for bursts of messages, and small in memory. A message can contain a rejected
/// package of a megabyte, but a client logs only one such message in ten minutes.
constexpr std::size_t capacity = 1000;
constexpr milliseconds patienceAtExit{1000};

int withinLevels(int level) { return std::clamp<int>(level, Level::Debug, Level::Error); }

spdlog::level::level_enum severityOf(int level) {
  switch (withinLevels(level)) {
    case Level::Debug:
      return spdlog::level::debug;
    case Level::Info:
      return spdlog::level::info;
    case Level::Warning:
      return spdlog::level::warn;
    default:
      return spdlog::level::err;
  }
}

/// Blocks the program's signals for threads that are started while this object exists. Signals that
/// report a fault are not blocked, because they go to the thread that causes the fault.
class SignalBlock {
 public:
#ifndef _WIN32
  SignalBlock() {
    sigset_t signals;
    sigfillset(&signals);
    for (const int fault : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP}) {
      sigdelset(&signals, fault);
    }
    pthread_sigmask(SIG_BLOCK, &signals, &before_);
  }
  ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;

 private:
  sigset_t before_{};
#endif
};

void write(const LogQueue::Sinks& sinks, const log_msg& message) {
  for (const auto& sink : sinks) {
    try {
      sink->log(message);
      sink->flush();
    } catch (const std::exception&) {
      continue;  // the failure cannot be reported anywhere else
    }
  }
}

/// Writes the waiting messages at exit. With shared libraries it is registered before the static
/// objects of libraries that use the log are constructed, so it runs after their destructors.
const struct AtExit {
  AtExit() {
    utilities::beforeExit([] { LogQueue::instance().flush(patienceAtExit); });
  }
} atExit;

}  // namespace

/// Writes messages to the sinks. Called on the queue's thread.
class LogQueue::Writer final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
 public:
  explicit Writer(LogQueue& queue) : queue_(queue) {}

 private:
  void sink_it_(const log_msg& message) override {
    const auto [sinks, dropped] = queue_.beginWriting();
    const ScopeGuard end([this] { queue_.endWriting(); });
    if (dropped > 0) {
      write(*sinks, log_msg("qel.log", spdlog::level::warn,
                            std::to_string(dropped) + " log messages were dropped because the log "
                                                      "could not be written fast enough"));
    }
    write(*sinks, message);
  }
  void flush_() override {}

  LogQueue& queue_;
};

LogQueue& LogQueue::instance() {
  static auto* const queue = new LogQueue;
  return *queue;
}

LogQueue::LogQueue()
    : worker_(std::make_shared<spdlog::async_logger>(
          "", std::make_shared<Writer>(*this), std::weak_ptr<spdlog::details::thread_pool>())),
      sinks_(std::make_shared<Sinks>()) {
  // The default error handler would write to standard error.
  worker_->set_error_handler([](const std::string&) {});
#ifndef _WIN32
  // A forked child process does not have the queue's thread. Its first message starts a new thread.
  pthread_atfork([]() QEL_ACQUIRE(instance().mutex_) { instance().mutex_.lock(); },
                 []() QEL_RELEASE(instance().mutex_) { instance().mutex_.unlock(); },
                 []() QEL_RELEASE(instance().mutex_) {
                   instance().beginAnew();
                   instance().mutex_.unlock();
                 });
#endif
}

void LogQueue::beginAnew() {
  threads_ = nullptr;
  messagesAdded_ = 0;
  messagesWritten_ = 0;
  dropsReported_ = 0;
}

void LogQueue::setSinks(Sinks sinks, int lowestLevel) {
  auto shared = std::make_shared<const Sinks>(std::move(sinks));
  const utilities::MutexLock lock(mutex_);
  sinks_.swap(shared);
  lowestLevel_ = withinLevels(lowestLevel);
}

void LogQueue::add(const std::string& name, int level, const std::string& message) {
  if (withinLevels(level) < lowestLevel_) {
    return;
  }
  const utilities::MutexLock lock(mutex_);
  if (threads_ == nullptr) {
    start();
  }
  threads_->post_log(std::shared_ptr(worker_), log_msg(name, severityOf(level), message),
                     spdlog::async_overflow_policy::overrun_oldest);
  ++messagesAdded_;
}

bool LogQueue::flush(milliseconds patience) {
  const auto deadline =
      std::chrono::steady_clock::now() + std::min<milliseconds>(patience, std::chrono::hours(24));
  utilities::MutexLock lock(mutex_);
  return written_.waitUntil(lock, deadline, [this, last = messagesAdded_]() QEL_REQUIRES(mutex_) {
    return threads_ == nullptr || messagesWritten_ + threads_->overrun_counter() >= last;
  });
}

std::size_t LogQueue::dropped() {
  const utilities::MutexLock lock(mutex_);
  return threads_ == nullptr ? 0 : threads_->overrun_counter();
}

void LogQueue::start() {
  [[maybe_unused]] const SignalBlock block;
  threads_ = new spdlog::details::thread_pool(capacity, 1);
}

LogQueue::Writing LogQueue::beginWriting() {
  const utilities::MutexLock lock(mutex_);
  const std::size_t dropped = threads_->overrun_counter();
  return {sinks_, dropped - std::exchange(dropsReported_, dropped)};
}

void LogQueue::endWriting() {
  const utilities::MutexLock lock(mutex_);
  ++messagesWritten_;
  written_.notifyAll();
}

}  // namespace qel::log
