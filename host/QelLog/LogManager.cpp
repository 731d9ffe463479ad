#include "host/QelLog/LogManager.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <utility>

#include <spdlog/details/null_mutex.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>

#ifdef _WIN32
#include <cstdio>

#include <io.h>
#include <windows.h>
#endif

#include "host/QelLog/LogQueue.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/Mutex.h"
#include "host/QelUtilities/OwnerOnly.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/StandardError.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::log {
namespace {

constexpr std::chrono::seconds patienceWithOldSinks{1};

class StandardErrorSink final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
  void sink_it_(const spdlog::details::log_msg& message) override {
    spdlog::memory_buf_t line;
    formatter_->format(message, line);
    utilities::writeToStandardError({line.data(), line.size()});
  }
  void flush_() override {}
};

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

/// Creates a missing file, so that spdlog finds it with the right access rights.
void createLogFile(const std::filesystem::path& file) {
  std::error_code error;
  std::filesystem::create_directories(file.parent_path(), error);
  if (!utilities::createForOwnerAlone(file, error) && error) {
    throw spdlog::spdlog_ex(utilities::systemMessage(error));
  }
}

spdlog::sink_ptr makeFileSink(const LogSettings& settings) {
  spdlog::file_event_handlers handlers;
  handlers.before_open = createLogFile;
#ifdef _WIN32
  // Windows does not rename a file that a child process has inherited.
  handlers.after_open = [](const spdlog::filename_t&, std::FILE* file) {
    SetHandleInformation(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file))),
                         HANDLE_FLAG_INHERIT, 0);
  };
#endif
  try {
    return std::make_shared<spdlog::sinks::rotating_file_sink_st>(
        settings.file.native(), settings.largestFile, settings.olderFiles, false, handlers);
  } catch (const spdlog::spdlog_ex& failure) {
    throw qel::exception("cannot open the log file " + utilities::utf8FromPath(settings.file) +
                         ": " + failure.what());
  }
}

LogQueue::Sinks makeSinks(const LogSettings& settings) {
  LogQueue::Sinks sinks;
  if (settings.standardError) {
    sinks.push_back(std::make_shared<StandardErrorSink>());
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
