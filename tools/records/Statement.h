#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace qel::records {

/// A statement of SQLite. Its database must outlive it. A failure is reported by the result code of
/// SQLite, because a damaged file must not end the reading.
class Statement {
 public:
  Statement(sqlite3* database, const std::string& text);
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  /// The result code of compiling the statement.
  int code() const { return code_; }
  int step();

  /// Restarts the statement with a value for its first parameter. A blob must stay valid until the
  /// next restart.
  void restart(std::int64_t parameter);
  void restart(std::string_view blob);

  bool isNull(int column) const;
  std::int64_t number(int column) const;
  /// Valid until the next step. Its data is null if the value is null or cannot be read.
  std::string_view text(int column) const;
  std::string_view blob(int column) const;

 private:
  sqlite3_stmt* statement_ = nullptr;
  int code_;
};

}  // namespace qel::records
