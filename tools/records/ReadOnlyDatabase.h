#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/records/ReadOnlyConnection.h"
#include "tools/records/Statement.h"

namespace qel::records {

/// Reads the rows of a SQLite file row by row, and remembers what could not be read. Never writes
/// to the file or its directory. Not thread-safe.
class ReadOnlyDatabase {
 public:
  /// Accepts a row, whose first column is its ID and whose second column is its text. Must return
  /// false if the text is not what a client stores. Must be fast, because a running client cannot
  /// write until all rows are read.
  using RowReader = std::function<bool(const Statement&)>;
  /// Accepts the completed fraction of a reading, from 0 to 1.
  using Progress = std::function<void(double)>;

  /// What is read from a table.
  struct Query {
    std::string table;
    std::string columns;  ///< the first one is the ID
    std::string id;
  };

  /// Throws under the same conditions as `ReadOnlyConnection`.
  explicit ReadOnlyDatabase(std::filesystem::path file, Progress progress = {})
      : connection_(std::move(file)), progress_(std::move(progress)) {}

  const ReadOnlyConnection& connection() const { return connection_; }

  /// Reads the rows with an ID above `position`, in ascending order of their IDs. Skips rows that
  /// are unreadable because of damage. Throws `qel::exception` if another program keeps the file
  /// locked.
  void forEachRow(const Query& query, const RowReader& reader, std::int64_t position = 0);

  /// Reads the rows with these IDs in the same way.
  void forEachRow(const Query& query, const std::vector<std::int64_t>& ids,
                  const RowReader& reader);

  /// The first column of the rows that the statement finds; `std::nullopt` if they cannot be read.
  std::optional<std::vector<std::int64_t>> numbers(const std::string& statement) const;

  /// Whether every row of the tables read so far was readable. The content of the rows does not
  /// matter.
  bool isReadWholly() const;

  /// Warnings for the user, one per string: what could not be read so far, and how the file was
  /// read.
  std::vector<std::string> remarks() const;

 private:
  struct Flaws {
    std::int64_t unreadable = 0;
    bool counted = true;  ///< whether `unreadable` counts rows; otherwise it counts attempts
    std::int64_t unintelligible = 0;
    std::string reason;  ///< why the whole table cannot be read
  };

  std::optional<std::int64_t> highestId(const Query& query) const;
  static std::int64_t readRow(const Statement& row, const RowReader& reader, Flaws& flaws);
  Flaws read(Statement& rows, const Query& query, const RowReader& reader,
             std::int64_t position) const;
  void report(std::int64_t position, std::int64_t highest) const;
  void remember(const std::string& table, const Flaws& found);

  const ReadOnlyConnection connection_;
  const Progress progress_;
  std::map<std::string, Flaws> flaws_;  ///< by table, the maximum over all readings
};

}  // namespace qel::records
