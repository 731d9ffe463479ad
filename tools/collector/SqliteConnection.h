#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace qel::collector {

struct SqliteClose {
  void operator()(sqlite3* connection) const;
  void operator()(sqlite3_stmt* statement) const;
};

using SqliteStatement = std::unique_ptr<sqlite3_stmt, SqliteClose>;

/// A connection to an SQLite file. Deleted content is overwritten. All operations throw
/// `StoreError`. Used by one thread at a time.
class SqliteConnection {
 public:
  enum class Missing { Create, Fail };
  enum class Access { Write, Read };

  /// How long opening and other short operations may wait.
  static constexpr std::chrono::seconds patience{5};

  SqliteConnection(const std::filesystem::path& file, Missing missing,
                   Access access = Access::Write);
  SqliteConnection(const SqliteConnection&) = delete;
  SqliteConnection& operator=(const SqliteConnection&) = delete;

  /// From now on, a statement fails when it waits or runs after the deadline. A commit that has
  /// begun is not interrupted.
  void setDeadline(std::chrono::steady_clock::time_point deadline) { deadline_ = deadline; }
  bool isLate() const { return isInterrupted_ || std::chrono::steady_clock::now() >= deadline_; }
  /// From now on, the deadline counts as passed. Thread-safe.
  void interrupt() { isInterrupted_ = true; }

  void execute(const std::string& sql) const;
  SqliteStatement prepare(const std::string& sql) const;
  /// The first value of the result.
  std::int64_t number(const std::string& sql);
  /// Moves the whole write-ahead log into the file and empties it. Returns false if a reader or
  /// writer prevents that until the deadline.
  bool truncateLog() const;

  [[noreturn]] void fail(const std::string& reason) const;
  [[noreturn]] void failAsReported() const;
  sqlite3* handle() const { return connection_.get(); }

 private:
  const std::string name_;
  std::chrono::steady_clock::time_point deadline_;
  std::atomic<bool> isInterrupted_ = false;
  std::unique_ptr<sqlite3, SqliteClose> connection_;
};

}  // namespace qel::collector
