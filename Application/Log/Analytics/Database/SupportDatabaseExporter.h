#pragma once

#include <memory>
#include <string>

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"

namespace qel::log::analytics {

/// Copies the rows of one session from one database to another, for support staff. Works on the
/// calling thread.
class QEL_ANALYTICS_EXPORT SupportDatabaseExporter {
 public:
  /// The exporter shares ownership of `source`.
  explicit SupportDatabaseExporter(const std::shared_ptr<CipDatabaseClientInterface>& source);

  /// Returns true if there were rows to copy and all of them were copied. The caller must have
  /// opened `target`. The copied rows get new IDs and keep their JSON texts.
  ///
  /// Waits at most five seconds in total if the databases are locked. An incomplete copy is logged.
  /// A retry needs an empty target. Throws `std::out_of_range` if the source returns a non-empty
  /// map that lacks a needed table.
  bool exportLastSessionToSqliteFile(const std::string& sessionId,
                                     const std::shared_ptr<CipDatabaseClientInterface>& target);

 private:
  const std::shared_ptr<CipDatabaseClientInterface> source_;
};

}  // namespace qel::log::analytics
