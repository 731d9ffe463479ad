#include "Application/Log/Analytics/Database/DatabaseAdapterTimestampDecorator.h"

namespace qel::log::analytics::details {
namespace {

/// Deleting so many rows takes a fraction of a second, and so does rolling them back.
constexpr std::size_t rowsAtOnce = 5000;

std::string whereOlderThan(std::chrono::seconds age) {
  // Calculated in seconds, so that even the longest age does not overflow.
  const auto oldest = std::chrono::duration_cast<std::chrono::seconds>(
                          std::chrono::system_clock::now().time_since_epoch()) -
                      age;
  return " WHERE STRFTIME('%s', timestamp_utc) < '" + std::to_string(oldest.count()) + "'";
}

}  // namespace

void DatabaseAdapterTimestampDecorator::addTableIfNotExists(const std::string& table) {
  execute("CREATE TABLE IF NOT EXISTS " + table +
          " (ID INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT, timestamp_utc DATETIME NOT NULL "
          "DEFAULT(STRFTIME('%Y-%m-%d %H:%M:%S', 'NOW')))");
}

void DatabaseAdapterTimestampDecorator::deleteEntriesOlderThan(const std::string& table,
                                                               std::chrono::seconds age) {
  execute("DELETE FROM " + table + whereOlderThan(age));
  resetIds(table);
}

bool DatabaseAdapterTimestampDecorator::deleteSomeEntriesOlderThan(const std::string& table,
                                                                   std::chrono::seconds age) {
  const auto deleted =
      execute("DELETE FROM " + table + " WHERE ID IN (SELECT ID FROM " + table +
              whereOlderThan(age) + " LIMIT " + std::to_string(rowsAtOnce) + ") RETURNING ID");
  return deleted.result().size() == rowsAtOnce;
}

}  // namespace qel::log::analytics::details
