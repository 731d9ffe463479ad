#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/records/ReadOnlyDatabase.h"
#include "tools/records/SessionChoice.h"

namespace qel::records {

/// The tables of records that every kind of file has.
enum class Table { Environments, Events };

/// A stored row. The texts are valid until the reader returns. If the row holds no record of a
/// client, only the ID and the text are set.
struct Row {
  std::int64_t id = 0;
  std::string_view text;  ///< the record as JSON
  bool isRecord = false;
  std::string_view session;  ///< empty if the record names none
  std::string_view time;
  std::string_view category;
  std::string_view subcategory;
  std::string_view event;
  std::int64_t count = 1;  ///< how often the client recorded the same text
};

/// A file with records of sessions. The file may be damaged, come from an untrusted source, or be
/// in use. Never writes to the file or its directory. Not thread-safe.
class RecordFile {
 public:
  /// Must return false if the row is not what a client records. Must be fast, because a running
  /// client cannot write until all rows are read.
  using RowReader = std::function<bool(const Row&)>;

  explicit RecordFile(std::unique_ptr<ReadOnlyDatabase> database)
      : database_(std::move(database)) {}
  virtual ~RecordFile() = default;

  RecordFile(const RecordFile&) = delete;
  RecordFile& operator=(const RecordFile&) = delete;

  const std::filesystem::path& path() const { return database_->connection().file(); }

  /// The reason why no table of the file can be read; empty if its schema can be read.
  const std::string& whyUnreadable() const { return database_->connection().whyUnreadable(); }

  /// Whether every row of the tables read so far was readable.
  bool isReadWholly() const { return database_->isReadWholly(); }

  /// Warnings for the user, one per string: what could not be read so far.
  std::vector<std::string> remarks() const { return database_->remarks(); }

  /// Reads the rows with an ID above `position`, in the order in which they were stored. Skips rows
  /// that cannot be read because of damage. Throws `qel::exception` if another program keeps the
  /// file locked.
  virtual void forEachRowAfter(std::int64_t position, Table table, const RowReader& reader) = 0;
  void forEachRow(Table table, const RowReader& reader) { forEachRowAfter(0, table, reader); }

  /// Reads the session's records in the same way.
  virtual void forEachRecord(const std::string& session, Table table, const RowReader& reader) = 0;

  /// Finds sessions without reading the whole file. The result contains each session of the choice,
  /// and may contain others; it is empty if the file must be read whole.
  virtual std::optional<std::vector<std::string>> find(const SessionChoice& /*choice*/) {
    return std::nullopt;
  }

  /// The number of texts that a collector refused; empty for a client's database.
  virtual std::optional<std::int64_t> refused() { return std::nullopt; }

 protected:
  ReadOnlyDatabase& database() { return *database_; }

 private:
  const std::unique_ptr<ReadOnlyDatabase> database_;
};

}  // namespace qel::records
