#include "Application/Log/Analytics/Database/SupportDatabaseExporter.h"

#include <utility>
#include <vector>

namespace qel::log::analytics {

using Table = CipDatabaseClientInterface::Table;

SupportDatabaseExporter::SupportDatabaseExporter(
    const std::shared_ptr<CipDatabaseClientInterface>& source)
    : source_(source) {}

bool SupportDatabaseExporter::exportLastSessionToSqliteFile(
    const std::string& sessionId, const std::shared_ptr<CipDatabaseClientInterface>& target) {
  auto session = source_->getAllFromSession(sessionId);
  if (session.empty() ||
      (session.at(Table::Environments).empty() && session.at(Table::Items).empty())) {
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
  return true;
}

}  // namespace qel::log::analytics
