#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

#include "host/QelLog/LoggerInterface.h"

namespace qel::log {

/// Which messages are logged, and where.
struct LogSettings {
  /// Messages below this level are dropped.
  int lowestLevel = Level::Warning;
  /// Whether messages go to standard error, with or without a file.
  bool standardError = true;
  /// The log file; empty: none. Only the owner may read it, since messages may quote what customers
  /// typed.
  std::filesystem::path file;
  /// A file that would exceed this many bytes is renamed with a number, and a new one begins.
  std::size_t largestFile = std::size_t{10} * 1024 * 1024;
  /// How many renamed files are kept.
  std::size_t olderFiles = 2;
};

/// The process's loggers by name. Until `configure`, the defaults of `LogSettings` apply.
///
/// **Threads.** Any thread may call the operations and the loggers, until the process ends. The
/// log's own thread writes the messages.
///
/// **Overload.** Loggers never wait. If more than a thousand messages wait, the oldest are dropped,
/// and the log reports their number.
///
/// **At exit.** An orderly end of the process writes the remaining messages, for at most a second.
class LogManager {
 public:
  /// The same object in every library. Never destroyed.
  static LogManager& instance();

  /// The logger of this name, never null. Later calls of `configure` apply to it.
  std::shared_ptr<LoggerInterface> getLogger(const std::string& name);

  /// Replaces the settings, also for existing loggers. First waits for at most a second until
  /// earlier messages are written under the old settings. Throws `qel::exception`, which names the
  /// file, if the log file cannot be opened; the settings then stay.
  void configure(const LogSettings& settings);

  /// Waits until all earlier messages are written or dropped, at most for `patience`. Returns
  /// whether they are.
  bool flush(std::chrono::milliseconds patience);

  LogManager(const LogManager&) = delete;
  LogManager& operator=(const LogManager&) = delete;

 private:
  LogManager();
  ~LogManager();

  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qel::log
