#pragma once

#include <memory>
#include <string>

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"

namespace qel::log::analytics {

/// Copies the rows of one session from one database to another, for support staff. Works on the
/// calling thread.
class QEL_ANALYTICS_EXPORT SupportDatabaseExporter {
 public:
  /// The exporter keeps a reference to `source`.
  explicit SupportDatabaseExporter(const std::shared_ptr<CipDatabaseClientInterface>& source);

  /// Returns whether there were rows to copy and all were copied. The caller has opened `target`.
  /// Rows get new IDs there and keep their texts.
  ///
  /// Waits at most five seconds while others hold the databases. An incomplete copy is logged, and
  /// the next try needs an empty target. Throws `std::out_of_range` when the source knows the
  /// session but returns it without a table that is needed.
  bool exportLastSessionToSqliteFile(const std::string& sessionId,
                                     const std::shared_ptr<CipDatabaseClientInterface>& target);

 private:
  const std::shared_ptr<CipDatabaseClientInterface> source_;
};

}  // namespace qel::log::analytics
