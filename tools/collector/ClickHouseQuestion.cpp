#include "tools/collector/ClickHouseQuestion.h"

#include <array>

namespace qel::collector {

const char* const versionsOfSessions =
    "SELECT session, installation, latest AS version FROM (SELECT session, installation,"
    " argMax(version, concat(toString(10000000000000 + toUInt64(toUInt32(time)) * 1000 + time_ms),"
    " version)) AS latest FROM environments WHERE session != '' AND version != ''"
    " GROUP BY session, installation)";

ClickHouseQuestion& ClickHouseQuestion::of(const Filter& filter, const std::string& sessionId) {
  andIf("day >= ", filter.from);
  andIf("day <= ", filter.until);
  andIf("installation = ", filter.installation);
  if (!filter.version.empty()) {
    then(" AND " + sessionId + " IN (SELECT cityHash64(session, installation) FROM (");
    then(versionsOfSessions).then(") WHERE version = " + sqlLiteral(filter.version) + ")");
  }
  return *this;
}

std::string textOfMilliseconds(const std::string& milliseconds) {
  return "concat(replaceOne(toString(toDateTime(toUInt32(intDiv(" + milliseconds +
         ", 1000)), 'UTC')), ' ', 'T'), '.', substring(toString(1000 + " + milliseconds +
         " % 1000), 2), 'Z')";
}

std::string sessionBeginsWith(const std::string& beginning) {
  const auto normalized = [](const std::string& id) {
    return "replaceRegexpAll(upper(" + id + "), '[-{}]', '')";
  };
  return "startsWith(" + normalized("session") + ", " + normalized(sqlLiteral(beginning)) + ")";
}

std::string countsOfEvents(const std::string& groups, const std::string& condition,
                           const Filter& filter) {
  // A key begins with a digest, so the pieces have about the same size.
  constexpr std::array<std::string_view, 4> begins{"00", "40", "80", "C0"};
  std::string pieces;
  for (std::size_t piece = 0; piece < begins.size(); ++piece) {
    ClickHouseQuestion question("SELECT " + groups);
    question.then(", sum(bitShiftRight(precedence, 32)) AS copies FROM events FINAL PREWHERE ")
        .then(condition);
    const auto andKey = [&](std::string_view relation, std::string_view byte) {
      question.then(" AND key ").then(relation).then(" toFixedString('\\x");
      question.then(byte).then("', 24)");
    };
    andKey(">=", begins.at(piece));
    if (piece + 1 < begins.size()) {
      andKey("<", begins.at(piece + 1));
    }
    question.ofEvents(filter).then(" GROUP BY " + groups);
    pieces.append(piece == 0 ? "" : " UNION ALL ").append(question.sql());
  }
  return pieces;
}

std::string sessionsOf(const Filter& filter) {
  const std::string none = "9999999999999999";
  // `days` restrict the pairs, not their records.
  const auto part = [&](const std::string& columns, const std::string& table) {
    ClickHouseQuestion question("SELECT session, installation, " + columns + " FROM " + table +
                                " WHERE session != ''");
    return question.andIf("installation = ", filter.installation)
        .then(" GROUP BY session, installation")
        .sql();
  };
  const std::string time(timeOfRecord);
  const std::string records =
      part(
          "minMerge(first) AS begin, maxMerge(last) AS end, maxMerge(crashed) AS crash,"
          " maxMerge(stopped) AS stop",
          "session_days") +
      " UNION ALL " +
      part("min(if(" + time + " = 0, " + none + ", " + time + ")) AS begin, max(" + time +
               ") AS end, toUInt8(0) AS crash, toUInt8(0) AS stop",
           "environments");
  ClickHouseQuestion question(
      "SELECT session, installation, version, if(begin = " + none +
      ", 0, begin) AS first, end AS last, crashed, stopped FROM (SELECT session, installation,"
      " min(begin) AS begin, max(end) AS end, max(crash) AS crashed, max(stop) AS stopped FROM (" +
      records + ") GROUP BY session, installation) ANY LEFT JOIN (" + versionsOfSessions +
      ") USING session, installation WHERE 1");
  question.andIf("version = ", filter.version);
  if (!filter.from.empty()) {
    question.then(" AND end >= toUInt64(toUInt32(toDateTime(" +
                  sqlLiteral(filter.from + " 00:00:00") + ", 'UTC'))) * 1000");
  }
  if (!filter.until.empty()) {
    question.then(" AND begin < toUInt64(toUInt32(toDateTime(" +
                  sqlLiteral(filter.until + " 00:00:00") + ", 'UTC')) + 86400) * 1000");
  }
  return question.sql();
}

}  // namespace qel::collector
