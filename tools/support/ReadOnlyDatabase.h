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

namespace qel::support {

/// One of the client's two database files, which may be damaged, come from a stranger, or be in use
/// by a running client. Nothing is ever written into it or beside it. Used by one thread at a time.
class ReadOnlyDatabase {
 public:
  /// Takes a row's ID and text. False: the text is not what a client stores. A running client waits
  /// with its writing meanwhile, so nothing slow belongs here.
  using RowReader = std::function<bool(std::int64_t, std::string_view)>;
  /// Told the part of a reading that is done, from 0 to 1.
  using Progress = std::function<void(double)>;

  /// Throws `qel::exception`, naming the file and the reason, when another program keeps it locked
  /// or when it cannot be opened. A file that is no database opens, but has no rows.
  explicit ReadOnlyDatabase(std::filesystem::path file, Progress progress = {});

  const std::filesystem::path& file() const { return file_; }

  /// Why no table of the file can be read; empty when at least its schema can.
  const std::string& whyUnreadable() const { return whyUnreadable_; }

  /// Reads the rows of the table in ascending order of their IDs, past those that damage has made
  /// unreadable. Throws as the constructor does.
  void forEachRow(const std::string& table, const RowReader& reader);

  /// Whether all rows of the tables that were read could be read, whatever they hold.
  bool isReadWholly() const;

  /// A line for each thing that whoever uses the rows has to know: what could not be read so far,
  /// and that a copy was read.
  std::vector<std::string> remarks() const;

 private:
  class Statement;
  struct Close {
    void operator()(sqlite3* database) const;
  };
  struct Flaws {
    std::int64_t unreadable = 0;
    bool counted = true;  ///< whether that is a number of rows, and not only of attempts
    std::int64_t unintelligible = 0;
    std::string reason;  ///< why the table as a whole cannot be read
  };

  void open(const std::filesystem::path& file, int mode);
  void openCopy();
  bool readSchema();
  std::optional<std::int64_t> highestId(const std::string& table) const;
  static std::int64_t readRow(Statement& row, const RowReader& reader, Flaws& flaws);
  Flaws read(Statement& rows, const std::string& table, const RowReader& reader) const;
  std::string lastError() const;
  [[noreturn]] void fail(int code) const;

  const std::filesystem::path file_;
  const Progress progress_;
  std::unique_ptr<sqlite3, Close> database_;
  std::string whyUnreadable_;
  bool readsCopy_ = false;
  std::map<std::string, Flaws> flaws_;  ///< by table, the most that any reading has met
};

}  // namespace qel::support
