#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;

namespace qel::records {

class PrivateCopy;

/// Reads one of the client's two database files. The file may be damaged, come from an untrusted
/// source, or be in use by a running client. Never writes to the file or its directory. Not
/// thread-safe.
class ReadOnlyDatabase {
 public:
  /// Accepts a row's ID and text. Must return false if the text is not what a client stores. Must
  /// be fast, because a running client cannot write until all rows are read.
  using RowReader = std::function<bool(std::int64_t, std::string_view)>;
  /// Accepts the completed fraction of a reading, from 0 to 1.
  using Progress = std::function<void(double)>;

  /// Throws `qel::exception` with the file and the reason if another program keeps the file locked
  /// or if it cannot be opened. A file that is not a database can be opened, but has no rows.
  explicit ReadOnlyDatabase(std::filesystem::path file, Progress progress = {});
  ~ReadOnlyDatabase();

  const std::filesystem::path& file() const { return file_; }

  /// The reason why no table of the file can be read; empty if its schema can be read.
  const std::string& whyUnreadable() const { return whyUnreadable_; }

  /// Reads the rows of the table in ascending order of their IDs. Skips rows that are unreadable
  /// because of damage. Throws under the same conditions as the constructor.
  void forEachRow(const std::string& table, const RowReader& reader);

  /// Whether every row of the tables read so far was readable. The content of the rows does not
  /// matter.
  bool isReadWholly() const;

  /// Warnings for the user, one per string: what could not be read so far, and whether a copy was
  /// read.
  std::vector<std::string> remarks() const;

 private:
  class Statement;
  struct Close {
    void operator()(sqlite3* database) const;
  };
  struct Flaws {
    std::int64_t unreadable = 0;
    bool counted = true;  ///< whether `unreadable` counts rows; otherwise it counts attempts
    std::int64_t unintelligible = 0;
    std::string reason;  ///< why the whole table cannot be read
  };

  void open(const std::string& name, int mode);
  void openCopy();
  bool readSchema();
  std::optional<std::int64_t> highestId(const std::string& table) const;
  static std::int64_t readRow(Statement& row, const RowReader& reader, Flaws& flaws);
  Flaws read(Statement& rows, const std::string& table, const RowReader& reader) const;
  std::string lastError() const;
  [[noreturn]] void fail(int code) const;

  const std::filesystem::path file_;
  const Progress progress_;
  std::unique_ptr<PrivateCopy> copy_;  ///< deleted after `database_` is closed
  std::unique_ptr<sqlite3, Close> database_;
  std::string whyUnreadable_;
  bool readsCopy_ = false;
  std::map<std::string, Flaws> flaws_;  ///< by table, the maximum over all readings
};

}  // namespace qel::records
