#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

struct sqlite3;

namespace qel::records {

class PrivateCopy;

/// Whether other rows may still be readable after this result code of SQLite.
bool isDamage(int code);

/// A connection to a SQLite file that may be damaged, come from an untrusted source, or be in use.
/// Never writes to the file or its directory. Not thread-safe.
///
/// A file is read in place, also while a program writes it in write-ahead mode. Only after a write
/// that was interrupted, a private copy is read instead: SQLite would otherwise repair the file.
class ReadOnlyConnection {
 public:
  /// Throws `qel::exception` with the file and the reason if another program keeps the file locked
  /// or if it cannot be opened. A file that is not a database can be opened, but has no tables.
  explicit ReadOnlyConnection(std::filesystem::path file);
  ~ReadOnlyConnection();

  const std::filesystem::path& file() const { return file_; }
  sqlite3* handle() const { return database_.get(); }

  /// The reason why no table of the file can be read; empty if its schema can be read.
  const std::string& whyUnreadable() const { return whyUnreadable_; }

  /// Warnings for the user, one per string: whether a copy was read, or a file that changed.
  std::vector<std::string> remarks() const;

  /// SQLite's message. It can quote text from an untrusted schema, so it is reduced to printable
  /// ASCII.
  std::string lastError() const;
  /// Throws `qel::exception` with the file and the meaning of SQLite's result code.
  [[noreturn]] void fail(int code) const;

 private:
  enum class Access { InPlace, WithoutLocks, Copy };
  struct Close {
    void operator()(sqlite3* database) const;
  };

  void open(const std::string& name, int mode);
  void openInPlace();
  void openCopy();
  bool readSchema();

  const std::filesystem::path file_;
  Access access_ = Access::InPlace;
  std::filesystem::file_time_type changed_;  ///< when the file was opened
  std::unique_ptr<PrivateCopy> copy_;        ///< deleted after `database_` is closed
  std::unique_ptr<sqlite3, Close> database_;
  std::string whyUnreadable_;
};

}  // namespace qel::records
