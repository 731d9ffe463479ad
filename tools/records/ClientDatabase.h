#pragma once

#include "tools/records/RecordFile.h"

namespace qel::records {

/// One of the two databases of a client.
class ClientDatabase : public RecordFile {
 public:
  using RecordFile::RecordFile;

  const char* nameOf(Table table) const override;
  void forEachRow(Table table, const RowReader& reader) override;
  void forEachRecord(const std::string& session, Table table, const RowReader& reader) override;
};

}  // namespace qel::records
