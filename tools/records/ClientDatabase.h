#pragma once

#include "tools/records/RecordFile.h"

namespace qel::records {

/// One of the two databases of a client.
class ClientDatabase : public RecordFile {
 public:
  using RecordFile::RecordFile;

  /// Whether the database has a table of a client.
  static bool isDatabase(const ReadOnlyDatabase& database);

  void forEachRowAfter(std::int64_t position, Table table, const RowReader& reader) override;
  void forEachRecord(const std::string& session, Table table, const RowReader& reader) override;
};

}  // namespace qel::records
