#include "Application/Log/Analytics/Database/DatabaseAdapterTimestampDecorator.h"

#include <limits>

namespace qel::log::analytics::details {
namespace {

/// Deleting so many rows takes a fraction of a second, and so does rolling them back.
constexpr std::int64_t rowsAtOnce = 5000;

constexpr auto highestId = std::numeric_limits<std::int64_t>::max();

std::string whereOlderThan(std::chrono::seconds age, std::int64_t examined) {
  // Calculated in seconds, so that even the longest age does not overflow.
  const auto oldest = std::chrono::duration_cast<std::chrono::seconds>(
                          std::chrono::system_clock::now().time_since_epoch()) -
                      age;
  return " WHERE STRFTIME('%s', timestamp_utc) < '" + std::to_string(oldest.count()) + "'" +
         (examined > 0 ? " AND ID > " + std::to_string(examined) : "");
}

}  // namespace

void DatabaseAdapterTimestampDecorator::addTableIfNotExists(const std::string& table) {
  execute("CREATE TABLE IF NOT EXISTS " + table +
          " (ID INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT, timestamp_utc DATETIME NOT NULL "
          "DEFAULT(STRFTIME('%Y-%m-%d %H:%M:%S', 'NOW')))");
}

void DatabaseAdapterTimestampDecorator::deleteEntriesOlderThan(const std::string& table,
                                                               std::chrono::seconds age,
                                                               std::int64_t examined) {
  execute("DELETE FROM " + table + whereOlderThan(age, examined));
  resetIds(table);
}

std::optional<std::int64_t> DatabaseAdapterTimestampDecorator::deleteSomeEntriesOlderThan(
    const std::string& table, std::chrono::seconds age, std::int64_t examined) {
  const auto next = execute("SELECT ID FROM " + table + " WHERE ID > " + std::to_string(examined) +
                            " ORDER BY ID LIMIT 1");
  const auto first = next.result().empty() ? highestId : std::stoll(next.result()[0][0]);
  if (first > highestId - rowsAtOnce) {
    return std::nullopt;
  }
  const auto last = first + rowsAtOnce - 1;
  const auto deleted = execute("DELETE FROM " + table + whereOlderThan(age, examined) +
                               " AND ID <= " + std::to_string(last));
  return deleted.boSuccess() ? std::optional(last) : std::nullopt;
}

}  // namespace qel::log::analytics::details
