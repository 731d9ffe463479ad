#pragma once

#include <memory>
#include <string>

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"

namespace qel::log::analytics {

/// Copies the rows of one session from a database into another one, for support staff. Works on the
/// caller's thread.
class QEL_ANALYTICS_EXPORT SupportDatabaseExporter {
 public:
  /// `source` is shared for as long as the exporter lives.
  explicit SupportDatabaseExporter(const std::shared_ptr<CipDatabaseClientInterface>& source);

  /// Whether there were rows to copy, and all were copied. The caller has opened `target`; rows get
  /// new IDs there and keep their texts. Waits for five seconds at most while others hold the
  /// databases; what is missing then is logged, and the next try needs an empty target. Throws
  /// `std::out_of_range` when the source knows the session but leaves out a table that has to be
  /// looked at.
  bool exportLastSessionToSqliteFile(const std::string& sessionId,
                                     const std::shared_ptr<CipDatabaseClientInterface>& target);

 private:
  const std::shared_ptr<CipDatabaseClientInterface> source_;
};

}  // namespace qel::log::analytics
