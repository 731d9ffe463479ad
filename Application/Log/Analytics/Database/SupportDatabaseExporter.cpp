#include "Application/Log/Analytics/Database/SupportDatabaseExporter.h"

#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/Patience.h"

namespace qel::log::analytics {

using Table = CipDatabaseClientInterface::Table;
using RowMap = CipDatabaseClientInterface::RowMap;

namespace {

const RowMap& rowsOf(const std::map<Table, RowMap>& session, Table table) {
  const auto entry = session.find(table);
  if (entry == session.end()) {
    throw std::out_of_range("invalid map<K, T> key");
  }
  return entry->second;
}

}  // namespace

SupportDatabaseExporter::SupportDatabaseExporter(
    // NOLINTNEXTLINE(modernize-pass-by-value): the signature is fixed.
    const std::shared_ptr<CipDatabaseClientInterface>& source)
    : source_(source) {}

bool SupportDatabaseExporter::exportLastSessionToSqliteFile(
    const std::string& sessionId, const std::shared_ptr<CipDatabaseClientInterface>& target) {
  const utilities::Patience patience(utilities::Patience::ofExport);
  auto session = source_->getAllFromSession(sessionId);
  if (session.empty() ||
      (rowsOf(session, Table::Environments).empty() && rowsOf(session, Table::Items).empty())) {
    return false;
  }
  for (auto& [table, rows] : session) {
    std::vector<std::string> texts;
    texts.reserve(rows.size());
    for (auto& [id, text] : rows) {
      texts.push_back(std::move(text));
    }
    if (!texts.empty()) {
      target->insertMultiple(texts, table);
    }
  }
  if (utilities::Patience::hasGivenUp()) {
    LogManager::instance()
        .getLogger("qel.log.analytics.SupportDatabaseExporter")
        ->log(Level::Error, "the export of session " + sessionId +
                                " is incomplete, since the databases were held for too long");
    return false;
  }
  return true;
}

}  // namespace qel::log::analytics
