#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"
#include "Application/Log/Analytics/Items/PackageFormat.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::items {

/// The JSON document that a batch of stored rows is uploaded in.
///
/// The rows are complete JSON texts and are joined without being parsed. They stay the caller's and
/// must live as long as the wrapper, which is made, rendered and dropped with its batch.
class QEL_ANALYTICS_EXPORT ItemWrapper {
 public:
  /// Packs the rows of one table; null elements are skipped, rows of an unknown table are ignored.
  ItemWrapper(const std::vector<const std::string*>& rows, CipDatabaseClientInterface::Table table);
  ItemWrapper(std::vector<const std::string*>&& rows,
              CipDatabaseClientInterface::Table table) = delete;
  /// Refers to the same rows.
  ItemWrapper(const ItemWrapper&) = default;

  /// Copies nothing: a wrapper keeps the rows that it was made for.
  // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned.
  ItemWrapper& operator=(const ItemWrapper&) { return *this; }

  /// Whether the rows given are none. False for a wrapper of an unknown table.
  bool isNullOrEmpty() const;

  /// Writes the texts that are not null, separated by commas.
  void mergeList(const std::vector<const std::string*>& list, std::ostringstream& out) const;

  /// `{"version": "3.1", "environments": [...], "events": [...]}`, with the list that is set and
  /// not empty.
  std::string toJson() const;
  /// The same in place of what `text` holds, in its memory if that is large enough.
  void writeTo(std::string& text) const;

 private:
  std::string version_ = format::packageVersion;
  const std::vector<const std::string*>* environments_ = nullptr;
  const std::vector<const std::string*>* events_ = nullptr;
};

}  // namespace qel::log::analytics::items
