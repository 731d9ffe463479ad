#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "host/QelLog/LoggerInterface.h"

namespace qel::log {

/// Which messages are logged, and where.
struct LogSettings {
  /// Messages below this level are dropped.
  int lowestLevel = Level::Warning;
  /// Whether messages go to standard error, even if there is a log file. On Windows, they go to
  /// what standard error was when the library QelUtilities was loaded, also if the host closes or
  /// replaces it later.
  bool standardError = true;
  /// The path of the log file. If it is empty, no file is written. Only the owner may read the
  /// file, because messages may quote what customers typed.
  std::filesystem::path file;
  /// A log file that would exceed this many bytes is renamed with a number, and a new file is
  /// started.
  std::size_t largestFile = std::size_t{10} * 1024 * 1024;
  /// The number of renamed files that are kept.
  std::size_t olderFiles = 2;
  /// If set, it receives each message as well. Called on the log's thread. Messages are lost while
  /// it does not return. It must not call `configure` or `flush`. Its exceptions are ignored.
  std::function<void(int level, const std::string& logger, const std::string& message)> receiver =
      {};
};

/// The process's loggers by name. Until `configure` is called, the defaults of `LogSettings` apply.
///
/// **Threads.** Thread-safe, including the loggers; may be used until the process ends. A thread of
/// the log writes the messages.
///
/// **Overload.** Loggers never block. If more than a thousand messages are queued, the oldest are
/// dropped, and the log reports the number of dropped messages.
///
/// **At exit.** When the process exits normally, it writes the remaining messages for at most a
/// second. On Windows, this requires that the host and this library use the same C library. A host
/// with another one should call `flush` before it exits.
class LogManager {
 public:
  /// Returns the same object in every library. The object is never destroyed.
  static LogManager& instance();

  /// The logger with this name; never null. Later calls of `configure` apply to this logger too.
  std::shared_ptr<LoggerInterface> getLogger(const std::string& name);

  /// Replaces the settings, also for existing loggers. First waits at most a second until earlier
  /// messages are written with the old settings. If the log file cannot be opened, throws
  /// `qel::exception`, which names the file, and keeps the old settings.
  void configure(const LogSettings& settings);

  /// Waits at most `patience` until all earlier messages are written or dropped. Returns false if
  /// the time was not sufficient.
  bool flush(std::chrono::milliseconds patience);

  /// The number of messages that this process has dropped because they came too fast.
  std::size_t dropped() const;

  LogManager(const LogManager&) = delete;
  LogManager& operator=(const LogManager&) = delete;

 private:
  LogManager();
  ~LogManager();

  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qel::log
