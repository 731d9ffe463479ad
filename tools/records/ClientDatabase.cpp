#include "tools/records/ClientDatabase.h"

#include <optional>

#include "Application/Log/Analytics/Database/DatabaseFormat.h"
#include "tools/common/RowReader.h"

namespace qel::records {
namespace {

namespace format = log::analytics::format;

std::string_view viewOf(const std::optional<std::string>& text) {
  return text ? std::string_view(*text) : std::string_view();
}

/// Passes the row to `reader`. Its session is empty if the text lacks the mark that clients search
/// for.
bool readRow(std::int64_t id, std::string_view text, const RecordFile::RowReader& reader) {
  const auto [verdict, columns] = tools::readRow(text);
  Row row;
  row.id = id;
  row.text = text;
  if (verdict == tools::RowVerdict::Sound) {
    const auto& [session, installation, time, category, subcategory, event] = columns;
    const bool isMarked =
        session && text.find(format::sessionMark(*session)) != std::string_view::npos;
    row.isRecord = true;
    row.session = isMarked ? viewOf(session) : std::string_view();
    row.time = viewOf(time);
    row.category = viewOf(category);
    row.subcategory = viewOf(subcategory);
    row.event = viewOf(event);
  }
  return reader(row);
}

ReadOnlyDatabase::Query queryOf(Table table) {
  return {table == Table::Events ? format::itemsTable : format::environmentsTable, "ID, json",
          "ID"};
}

}  // namespace

bool ClientDatabase::isDatabase(const ReadOnlyDatabase& database) {
  const auto tables = database.numbers(
      std::string("SELECT rowid FROM sqlite_schema WHERE type = 'table' AND name IN"
                  " ('") +
      format::itemsTable + "', '" + format::environmentsTable + "')");
  return tables && !tables->empty();
}

void ClientDatabase::forEachRowAfter(std::int64_t position, Table table, const RowReader& reader) {
  database().forEachRow(
      queryOf(table),
      [&](const Statement& row) { return readRow(row.number(0), row.text(1), reader); }, position);
}

void ClientDatabase::forEachRecord(const std::string& session, Table table,
                                   const RowReader& reader) {
  const auto mark = format::sessionMark(session);
  const auto readIfOfSession = [&](const Row& row) {
    return !row.session.empty() && (row.session != session || reader(row));
  };
  database().forEachRow(queryOf(table), [&](const Statement& row) {
    const auto text = row.text(1);
    return text.find(mark) == std::string_view::npos ||
           readRow(row.number(0), text, readIfOfSession);
  });
}

}  // namespace qel::records
