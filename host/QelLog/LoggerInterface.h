#pragma once

#include <string>

namespace qel::log {

/// Severities of a log message, by the number that `LoggerInterface::log` takes.
enum Level : int { Debug = 0, Info = 1, Warning = 2, Error = 3 };

/// One named source of log messages. Any thread may log, also while the process exits; a message
/// that cannot be written is dropped.
class LoggerInterface {
 public:
  virtual ~LoggerInterface() = default;

  /// Writes `message` as it is (it is no format string), soon and without waiting for it. A level
  /// above 3 counts as 3, one below 0 as 0. Must not throw: it is also called where nothing may be
  /// thrown.
  virtual void log(int level, const std::string& message) = 0;
};

}  // namespace qel::log
