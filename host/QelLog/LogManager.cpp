#include "host/QelLog/LogManager.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/dist_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>
#endif

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"

namespace qel::log {
namespace {

spdlog::level::level_enum severityOf(int level) {
  switch (std::clamp<int>(level, Level::Debug, Level::Error)) {
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

spdlog::sink_ptr makeFileSink(const LogSettings& settings) {
  spdlog::file_event_handlers forOwnerAlone;
#ifndef _WIN32
  forOwnerAlone.before_open = [](const spdlog::filename_t& name) {
    close(open(name.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR));
  };
#endif
  try {
    return std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
        settings.file.string(), settings.largestFile, settings.olderFiles, false, forOwnerAlone);
  } catch (const spdlog::spdlog_ex& failure) {
    throw qel::exception("cannot open the log file " + utilities::utf8FromPath(settings.file) +
                         ": " + failure.what());
  }
}

std::vector<spdlog::sink_ptr> makeSinks(const LogSettings& settings) {
  std::vector<spdlog::sink_ptr> sinks;
  if (settings.standardError) {
    sinks.push_back(std::make_shared<spdlog::sinks::stderr_sink_mt>());
  }
  if (!settings.file.empty()) {
    sinks.push_back(makeFileSink(settings));
  }
  for (const auto& sink : sinks) {
    sink->set_level(severityOf(settings.lowestLevel));
    sink->set_formatter(std::make_unique<spdlog::pattern_formatter>(
        "%Y-%m-%dT%H:%M:%S.%eZ %l %n: %v", spdlog::pattern_time_type::utc));
  }
  return sinks;
}

class Logger : public LoggerInterface {
 public:
  Logger(const std::string& name, const spdlog::sink_ptr& sink) : logger_(name, sink) {
    logger_.set_level(spdlog::level::trace);
    logger_.flush_on(spdlog::level::info);
    logger_.set_error_handler([](const std::string&) {});
  }

  void log(int level, const std::string& message) override {
    logger_.log(severityOf(level), spdlog::string_view_t(message));
  }

 private:
  spdlog::logger logger_;
};

}  // namespace

class LogManager::Implementation {
 public:
  Implementation() { target_->set_sinks(makeSinks({})); }

  std::shared_ptr<LoggerInterface> getLogger(const std::string& name) {
    const std::lock_guard lock(mutex_);
    auto& logger = loggers_[name];
    if (!logger) {
      logger = std::make_shared<Logger>(name, target_);
    }
    return logger;
  }

  void configure(const LogSettings& settings) { target_->set_sinks(makeSinks(settings)); }

 private:
  const std::shared_ptr<spdlog::sinks::dist_sink_mt> target_ =
      std::make_shared<spdlog::sinks::dist_sink_mt>();  ///< locks for itself
  std::mutex mutex_;
  std::map<std::string, std::shared_ptr<LoggerInterface>> loggers_;  ///< guarded by mutex_
};

LogManager& LogManager::instance() {
  // Never destroyed: worker threads may still log while the process exits.
  static auto* const manager = new LogManager;
  return *manager;
}

LogManager::LogManager() : implementation_(std::make_unique<Implementation>()) {}

LogManager::~LogManager() = default;

std::shared_ptr<LoggerInterface> LogManager::getLogger(const std::string& name) {
  return implementation_->getLogger(name);
}

void LogManager::configure(const LogSettings& settings) { implementation_->configure(settings); }

}  // namespace qel::log
