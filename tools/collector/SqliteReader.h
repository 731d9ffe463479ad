#pragma once

#include <filesystem>

#include "tools/collector/SqliteConnection.h"
#include "tools/collector/StoreReader.h"

namespace qel::collector {

/// Answers questions about an SQLite store, from its summaries where there are any. Each answer is
/// one read transaction, so the write-ahead log does not grow for long.
class SqliteReader : public StoreReader {
 public:
  /// Opens an existing store of the current version. Throws `StoreError` if that fails.
  explicit SqliteReader(const std::filesystem::path& file);

  /// "live" looks at the newest 100,000 rows. A text in "live" and "refused" is cut after 20,000
  /// characters; a refused one can have any bytes. A cursor beyond the newest row counts as none:
  /// IDs begin again after the newest rows were erased. Throws `std::invalid_argument` if `after`
  /// is no cursor.
  ResultTable read(std::string_view figure, const Filter& filter,
                   std::chrono::steady_clock::time_point deadline) override;
  StoredSession session(const std::string& id,
                        std::chrono::steady_clock::time_point deadline) override;
  std::vector<std::string> sessionsBeginningWith(
      const std::string& beginning, std::size_t limit,
      std::chrono::steady_clock::time_point deadline) override;
  void interrupt() override { connection_.interrupt(); }

 private:
  ResultTable answer(std::string_view figure, const Filter& filter);

  SqliteConnection connection_;
};

}  // namespace qel::collector
