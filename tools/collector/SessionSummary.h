#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace qel::collector {

/// A stored event or environment record. A view is empty for NULL.
struct SummedRow {
  std::int64_t id = 0;
  std::int64_t count = 0;  ///< negative for a row that is removed
  std::string_view session;
  std::string_view installation;
  std::string_view time;
  std::string_view category;
  std::string_view subcategory;
  std::string_view event;
  std::string_view text;  ///< only needed if `needsText`
};

/// What the rows of one session and one installation add to the summaries.
///
/// **Rows without a session** have no environment and no order. Only their counts are summed up.
///
/// **Days** come from the client's clock. A row whose time is no date counts in no day.
class SessionSummary {
 public:
  /// Kind, day, name.
  using DailyKey = std::tuple<std::string_view, std::string, std::string>;

  struct Crash {
    std::int64_t event = 0;  ///< the row's ID
    std::string time;        ///< empty if it is no date
    std::string code;
    /// The last command that was started in these rows before the crash.
    std::optional<std::string> command;
    std::int64_t count = 0;
  };

  /// The kinds of daily values. The name is the category or the command.
  static constexpr std::string_view category = "category";
  static constexpr std::string_view started = "started";
  static constexpr std::string_view cancelled = "cancelled";
  static constexpr std::string_view memory = "memory";  ///< highest reading in KB, without a name
  /// The category of the events that have the readings.
  static constexpr std::string_view memoryCategory = "MemoryUsage";

  void addEvent(const SummedRow& row);
  void addEnvironment(const SummedRow& row);
  /// The count of a summed row has changed, or the row is removed. `row.count` is the difference.
  void countEvent(const SummedRow& row);
  void countEnvironment(const SummedRow& row) { environments += row.count; }

  std::string version;      ///< of the latest environment record that has one
  std::string versionTime;  ///< of that record; empty if it is no date
  std::string first;
  std::string last;
  std::int64_t events = 0;
  std::int64_t environments = 0;
  std::int64_t crashed = 0;
  std::int64_t stopped = 0;
  std::optional<std::string> lastCommand;  ///< that was started
  std::map<DailyKey, std::int64_t> daily;
  std::vector<Crash> crashes;

 private:
  void addReading(const SummedRow& row, std::string_view date);
  void widen(std::string_view date);
};

}  // namespace qel::collector
