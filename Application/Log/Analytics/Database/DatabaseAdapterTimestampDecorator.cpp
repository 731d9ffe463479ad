#include "Application/Log/Analytics/Database/DatabaseAdapterTimestampDecorator.h"

namespace qel::log::analytics::details {

void DatabaseAdapterTimestampDecorator::addTableIfNotExists(const std::string& table) {
  execute("CREATE TABLE IF NOT EXISTS " + table +
          " (ID INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT, timestamp_utc DATETIME NOT NULL "
          "DEFAULT(STRFTIME('%Y-%m-%d %H:%M:%S', 'NOW')))");
}

void DatabaseAdapterTimestampDecorator::deleteEntriesOlderThan(const std::string& table,
                                                               std::chrono::seconds age) {
  // Calculated in seconds, so that even the longest age does not overflow.
  const auto oldest = std::chrono::duration_cast<std::chrono::seconds>(
                          std::chrono::system_clock::now().time_since_epoch()) -
                      age;
  execute("DELETE FROM " + table + " WHERE STRFTIME('%s', timestamp_utc) < '" +
          std::to_string(oldest.count()) + "'");
  resetIds(table);
}

}  // namespace qel::log::analytics::details
