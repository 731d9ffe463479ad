#pragma once

#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "host/QelLog/LoggerInterface.h"

namespace qel::db::sql {

/// Logs messages about one database file. Each message begins with the file's name. Thread-safe.
class DatabaseLog {
 public:
  explicit DatabaseLog(const std::filesystem::path& file);

  /// Logs a warning, in which `text` follows the file's name. Drops the message if allocation
  /// fails.
  void warn(std::string_view text) const noexcept;

  /// Logs an error, in which the string that `makeText` returns follows the file's name. Calls
  /// `outOfMemory` if allocation fails.
  template <typename MakeText>
  void error(MakeText makeText) const noexcept {
    try {
      logger_->log(log::Level::Error, name_ + makeText());
    } catch (const std::bad_alloc&) {
      outOfMemory();
    }
  }
  /// Logs that memory ran out. The message's text was allocated earlier.
  void outOfMemory() const noexcept;

 private:
  const std::string name_;
  const std::string outOfMemoryText_;
  const std::shared_ptr<log::LoggerInterface> logger_;
};

}  // namespace qel::db::sql
