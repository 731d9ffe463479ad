#pragma once

#include <map>
#include <string>

#include "tools/records/RecordFile.h"

namespace qel::records {

/// The store of a collector: what it received from the clients. A session's records are found by
/// their key, which begins with a hash of the session's ID.
class CollectorStore : public RecordFile {
 public:
  /// Throws `tools::InputError` if another version of the collector made the store.
  explicit CollectorStore(std::unique_ptr<ReadOnlyDatabase> database);

  /// Whether the database is a collector's store.
  static bool isStore(const ReadOnlyDatabase& database);

  void forEachRowAfter(std::int64_t position, Table table, const RowReader& reader) override;
  void forEachRecord(const std::string& session, Table table, const RowReader& reader) override;
  std::optional<std::vector<std::string>> find(const SessionChoice& choice) override;
  std::optional<std::int64_t> refused() override;

 private:
  bool findByKey(Table table, const SessionChoice& choice);
  bool findLast(Table table);
  std::string firstTime(const std::string& session);

  /// The beginning of the records' keys, by session. Has only the sessions that were found.
  std::map<std::string, std::string> keys_;
};

}  // namespace qel::records
