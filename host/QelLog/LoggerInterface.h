#pragma once

#include <string>

namespace qel::log {

/// The severities of a log message, which `LoggerInterface::log` accepts as numbers.
enum Level : int { Debug = 0, Info = 1, Warning = 2, Error = 3 };

/// A named source of log messages. Thread-safe; may be used while the process exits. A message that
/// cannot be written is dropped.
class LoggerInterface {
 public:
  virtual ~LoggerInterface() = default;

  /// Logs `message` unchanged (it is not a format string), without blocking. A level above 3 counts
  /// as 3, and a level below 0 counts as 0. Must not throw, because some callers must not throw.
  virtual void log(int level, const std::string& message) = 0;
};

}  // namespace qel::log
