#include "host/QelLog/LogManager.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <utility>

#include <spdlog/details/null_mutex.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>

#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>
#endif

#include "host/QelLog/LogQueue.h"
#include "host/QelLog/StandardErrorSink.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/Mutex.h"
#include "host/QelUtilities/PathText.h"

namespace qel::log {
namespace {

constexpr std::chrono::seconds patienceWithOldSinks{1};

/// Passes messages to the program.
class ReceiverSink final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
 public:
  using Receiver = decltype(LogSettings::receiver);

  explicit ReceiverSink(Receiver receiver) : receiver_(std::move(receiver)) {}

 private:
  void sink_it_(const spdlog::details::log_msg& message) override {
    try {
      receiver_(levelOf(message.level),
                std::string(message.logger_name.data(), message.logger_name.size()),
                std::string(message.payload.data(), message.payload.size()));
    } catch (...) {
      return;
    }
  }
  void flush_() override {}

  static int levelOf(spdlog::level::level_enum severity) {
    return std::clamp(severity - spdlog::level::debug, +Level::Debug, +Level::Error);
  }

  const Receiver receiver_;
};

spdlog::sink_ptr makeFileSink(const LogSettings& settings) {
  spdlog::file_event_handlers forOwnerAlone;
#ifndef _WIN32
  forOwnerAlone.before_open = [](const spdlog::filename_t& name) {
    close(open(name.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR));
  };
#endif
  try {
    return std::make_shared<spdlog::sinks::rotating_file_sink_st>(
        settings.file.native(), settings.largestFile, settings.olderFiles, false, forOwnerAlone);
  } catch (const spdlog::spdlog_ex& failure) {
    throw qel::exception("cannot open the log file " + utilities::utf8FromPath(settings.file) +
                         ": " + failure.what());
  }
}

LogQueue::Sinks makeSinks(const LogSettings& settings) {
  LogQueue::Sinks sinks;
  if (settings.standardError) {
    sinks.push_back(makeStandardErrorSink());
  }
  if (!settings.file.empty()) {
    sinks.push_back(makeFileSink(settings));
  }
  if (settings.receiver) {
    sinks.push_back(std::make_shared<ReceiverSink>(settings.receiver));
  }
  for (const auto& sink : sinks) {
    sink->set_formatter(std::make_unique<spdlog::pattern_formatter>(
        "%Y-%m-%dT%H:%M:%S.%eZ %l %n: %v", spdlog::pattern_time_type::utc, "\n"));
  }
  return sinks;
}

class Logger : public LoggerInterface {
 public:
  explicit Logger(std::string name) : name_(std::move(name)) {}

  void log(int level, const std::string& message) override {
    try {
      LogQueue::instance().add(name_, level, message);
    } catch (const std::exception&) {
      return;  // allocation failed or the thread could not start
    }
  }

 private:
  const std::string name_;
};

}  // namespace

class LogManager::Implementation {
 public:
  Implementation() { setSinks({}); }

  std::shared_ptr<LoggerInterface> getLogger(const std::string& name) {
    const utilities::MutexLock lock(mutex_);
    auto& logger = loggers_[name];
    if (!logger) {
      logger = std::make_shared<Logger>(name);
    }
    return logger;
  }

  static void setSinks(const LogSettings& settings) {
    auto sinks = makeSinks(settings);
    LogQueue::instance().flush(patienceWithOldSinks);
    LogQueue::instance().setSinks(std::move(sinks), settings.lowestLevel);
  }

 private:
  utilities::Mutex mutex_;
  std::map<std::string, std::shared_ptr<LoggerInterface>> loggers_ QEL_GUARDED_BY(mutex_);
};

LogManager& LogManager::instance() {
  // Never destroyed, because worker threads may still log while the process exits.
  static auto* const manager = new LogManager;
  return *manager;
}

LogManager::LogManager() : implementation_(std::make_unique<Implementation>()) {}

LogManager::~LogManager() = default;

std::shared_ptr<LoggerInterface> LogManager::getLogger(const std::string& name) {
  return implementation_->getLogger(name);
}

void LogManager::configure(const LogSettings& settings) { Implementation::setSinks(settings); }

bool LogManager::flush(std::chrono::milliseconds patience) {
  return LogQueue::instance().flush(patience);
}

}  // namespace qel::log
