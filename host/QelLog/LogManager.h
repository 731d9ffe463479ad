#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

#include "host/QelLog/LoggerInterface.h"

namespace qel::log {

/// Where log messages go, and which.
struct LogSettings {
  /// Messages below this level are dropped.
  int lowestLevel = Level::Warning;
  /// Whether they go to standard error, be there a file or not.
  bool standardError = true;
  /// Also written to this file when it is not empty; created for the owner alone, since messages
  /// may hold what customers typed.
  std::filesystem::path file;
  /// When the file would grow beyond this many bytes it is kept under a numbered name and begun
  /// anew.
  std::size_t largestFile = std::size_t{10} * 1024 * 1024;
  /// How many such older files are kept.
  std::size_t olderFiles = 2;
};

/// The process's loggers by name. All operations may be called from any thread, until the process
/// ends; so may the loggers. Before `configure`, messages go where `LogSettings` says by default.
/// A thread of the log's own writes them. Where they cannot be written as fast as they come, nobody
/// waits: of a thousand that wait the oldest is dropped, and the log says how many were. An orderly
/// end of the process writes what is left, for a second at most.
class LogManager {
 public:
  /// Always the same object, whichever library asks; it is never destroyed.
  static LogManager& instance();

  /// The logger of this name, never null, made on first use. It follows later calls of `configure`.
  std::shared_ptr<LoggerInterface> getLogger(const std::string& name);

  /// Replaces where messages go, for loggers already handed out too. Waits a second at most until
  /// what was logged before is written where it went so far. Throws `qel::exception`, naming the
  /// file, when the log file cannot be opened; nothing is changed then.
  void configure(const LogSettings& settings);

  /// Waits until what was logged before the call is written or dropped; false when that takes
  /// longer than `patience`.
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
