#pragma once

#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "host/QelLog/LoggerInterface.h"

namespace qel::db::sql {

/// Logs messages about one database file. Each begins with the file's name. Any thread.
class DatabaseLog {
 public:
  explicit DatabaseLog(const std::filesystem::path& file);

  /// `text` follows the name. Without memory for it, the message is dropped.
  void warn(std::string_view text) const noexcept;

  /// The text that `makeText` returns follows the name. Without memory for it, calls `outOfMemory`.
  template <typename MakeText>
  void error(MakeText makeText) const noexcept {
    try {
      logger_->log(log::Level::Error, name_ + makeText());
    } catch (const std::bad_alloc&) {
      outOfMemory();
    }
  }
  void outOfMemory() const noexcept;

 private:
  const std::string name_;
  const std::string outOfMemoryText_;
  const std::shared_ptr<log::LoggerInterface> logger_;
};

}  // namespace qel::db::sql
