#pragma once

#include <string>

namespace qel::log {

/// The severities of a log message, which `LoggerInterface::log` takes as numbers.
enum Level : int { Debug = 0, Info = 1, Warning = 2, Error = 3 };

/// A named source of log messages. Any thread may log, also while the process exits. A message that
/// cannot be written is dropped.
class LoggerInterface {
 public:
  virtual ~LoggerInterface() = default;

  /// Logs `message` unchanged (it is no format string), without a wait. A level above 3 counts as
  /// 3, one below 0 as 0. Must not throw, since callers include code that must not throw.
  virtual void log(int level, const std::string& message) = 0;
};

}  // namespace qel::log
