#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"
#include "Application/Log/Analytics/Items/PackageFormat.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// The JSON document for the upload of a batch of stored rows.
///
/// The rows are complete JSON texts and are joined without parsing. The wrapper refers to the
/// strings of the caller, which must outlive the wrapper.
class QEL_ANALYTICS_EXPORT ItemWrapper {
 public:
  /// Refers to the rows of one table. Null elements are skipped. Rows of an unknown table are
  /// ignored.
  ItemWrapper(const std::vector<const std::string*>& rows, CipDatabaseClientInterface::Table table);
  ItemWrapper(std::vector<const std::string*>&& rows,
              CipDatabaseClientInterface::Table table) = delete;
  /// The copy refers to the same rows.
  ItemWrapper(const ItemWrapper&) = default;

  /// Does nothing, because a wrapper always refers to the rows that its constructor received.
  // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned.
  ItemWrapper& operator=(const ItemWrapper&) { return *this; }

  /// Whether there are no rows. False for an unknown table.
  bool isNullOrEmpty() const;

  /// Writes the strings of `list` that are not null to `out`, separated by commas.
  void mergeList(const std::vector<const std::string*>& list, std::ostringstream& out) const;

  /// Returns `{"version": "3.1", "environments": [...], "events": [...]}`, with only the list that
  /// is set and not empty.
  std::string toJson() const;
  /// Writes the document that `toJson` returns to `text`, replacing its content and reusing its
  /// capacity.
  void writeTo(std::string& text) const;

 private:
  std::string version_ = format::packageVersion;
  const std::vector<const std::string*>* environments_ = nullptr;
  const std::vector<const std::string*>* events_ = nullptr;
};

}  // namespace qel::log::analytics::items
