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
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
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
#ifdef _WIN32
  const bool exists = utilities::createForOwnerAlone(file, error) || !error;
#else
  // Unlike `createForOwnerAlone`, also creates the missing target of a symbolic link.
  const int opened = ::open(file.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
  error = utilities::lastSystemError();
  const bool exists = opened != -1 && close(opened) == 0;
#endif
  if (!exists) {
    throw spdlog::spdlog_ex(utilities::systemMessage(error));
  }
}

std::unique_ptr<spdlog::formatter> lineFormat() {
  return std::make_unique<spdlog::pattern_formatter>("%Y-%m-%dT%H:%M:%S.%eZ %l %n: %v",
                                                     spdlog::pattern_time_type::utc, "\n");
}

/// Opens the file again after a failure. A sink of spdlog whose rotation failed has no open file,
/// and would crash at the next message.
class FileSink final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
 public:
  explicit FileSink(const LogSettings& settings)
      : file_(utilities::plainPath(settings.file)),
        largestFile_(settings.largestFile),
        olderFiles_(settings.olderFiles) {
    open();
  }

 private:
  void sink_it_(const spdlog::details::log_msg& message) override {
    if (!sink_) {
      open();
    }
    try {
      sink_->log(message);
    } catch (...) {
      sink_ = nullptr;
      throw;
    }
  }

  void flush_() override {
    if (sink_) {
      sink_->flush();
    }
  }

  void open() {
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
      sink_ = std::make_shared<spdlog::sinks::rotating_file_sink_st>(file_.native(), largestFile_,
                                                                     olderFiles_, false, handlers);
    } catch (const spdlog::spdlog_ex& failure) {
      throw qel::exception("cannot open the log file " + utilities::utf8FromPath(file_) + ": " +
                           failure.what());
    }
    sink_->set_formatter(lineFormat());
  }

  const std::filesystem::path file_;
  const std::size_t largestFile_;
  const std::size_t olderFiles_;
  spdlog::sink_ptr sink_;  ///< null after a failure
};

LogQueue::Sinks makeSinks(const LogSettings& settings) {
  LogQueue::Sinks sinks;
  if (settings.standardError) {
    sinks.push_back(std::make_shared<StandardErrorSink>());
  }
  if (!settings.file.empty()) {
    sinks.push_back(std::make_shared<FileSink>(settings));
  }
  if (settings.receiver) {
    sinks.push_back(std::make_shared<ReceiverSink>(settings.receiver));
  }
  for (const auto& sink : sinks) {
    sink->set_formatter(lineFormat());
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

std::size_t LogManager::dropped() const { return LogQueue::instance().dropped(); }

}  // namespace qel::log
