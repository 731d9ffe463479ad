#pragma once

#include <string>
#include <string_view>

#include "tools/collector/ClickHouseText.h"
#include "tools/collector/StoreReader.h"

namespace qel::collector {

/// Joins the parts of a question.
class ClickHouseQuestion {
 public:
  explicit ClickHouseQuestion(std::string sql) : sql_(std::move(sql)) {}

  ClickHouseQuestion& then(std::string_view sql) {
    sql_ += sql;
    return *this;
  }
  /// Appends " AND ", the condition and the value as a literal, unless the value is empty.
  ClickHouseQuestion& andIf(std::string_view condition, const std::string& value) {
    if (!value.empty()) {
      sql_.append(" AND ").append(condition).append(sqlLiteral(value));
    }
    return *this;
  }
  /// The restrictions of a row of `events`: its day, installation and version.
  ClickHouseQuestion& ofEvents(const Filter& filter) { return of(filter, "session_id"); }
  /// The same for a row of `session_days`.
  ClickHouseQuestion& ofSessionDays(const Filter& filter) {
    return of(filter, "cityHash64(session, installation)");
  }

  const std::string& sql() const { return sql_; }

 private:
  ClickHouseQuestion& of(const Filter& filter, const std::string& sessionId);

  std::string sql_;
};

/// Milliseconds since 1970; 0 if a record has no time.
inline constexpr std::string_view timeOfRecord = "(toUInt64(toUInt32(time)) * 1000 + time_ms)";
inline constexpr std::string_view arrival = "(toUInt64(toUInt32(received)) * 1000 + received_ms)";

/// Such a time as a text, as clients write it.
std::string textOfMilliseconds(const std::string& milliseconds);

/// The condition that the ID of a session begins with a text. Case, hyphens and braces do not
/// count.
std::string sessionBeginsWith(const std::string& beginning);

/// Sums up the counts of the events that meet a condition, each event once. The result has the
/// columns `groups` and `copies`, with several rows for a group. The condition may use only columns
/// that the text of an event determines.
///
/// `FINAL` need not merge what PREWHERE leaves out. Old versions merge in one thread, so the
/// question has pieces, which ClickHouse answers at the same time. The count is read from the upper
/// half of `precedence`, which `FINAL` reads anyway.
std::string countsOfEvents(const std::string& groups, const std::string& condition,
                           const Filter& filter);

/// The version of each pair of session and installation: that of its latest environment record.
extern const char* const versionsOfSessions;

/// Session, installation, version, first, last, crashed and stopped of each pair of session and
/// installation that ran in the days of the filter, at least in part. A time is 0 if there is none.
std::string sessionsOf(const Filter& filter);

}  // namespace qel::collector
