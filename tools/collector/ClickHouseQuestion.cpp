#include "tools/collector/ClickHouseQuestion.h"

namespace qel::collector {

const char* const versionsOfSessions =
    "SELECT session, installation, latest AS version FROM (SELECT session, installation,"
    " argMax(version, concat(toString(10000000000000 + toUInt64(toUInt32(time)) * 1000 + time_ms),"
    " version)) AS latest FROM environments WHERE session != '' AND version != ''"
    " GROUP BY session, installation)";

ClickHouseQuestion& ClickHouseQuestion::ofEvents(const Filter& filter) {
  andIf("day >= ", filter.from);
  andIf("day <= ", filter.until);
  andIf("installation = ", filter.installation);
  if (!filter.version.empty()) {
    then(" AND (session, installation) IN (SELECT session, installation FROM (");
    then(versionsOfSessions).then(") WHERE version = " + sqlLiteral(filter.version) + ")");
  }
  return *this;
}

std::string textOfMilliseconds(const std::string& milliseconds) {
  return "concat(replaceOne(toString(toDateTime(toUInt32(intDiv(" + milliseconds +
         ", 1000)), 'UTC')), ' ', 'T'), '.', substring(toString(1000 + " + milliseconds +
         " % 1000), 2), 'Z')";
}

std::string sessionsOf(const Filter& filter) {
  const std::string time(timeOfRecord);
  const std::string none = "9999999999999999";
  // `days` restrict the pairs, not their records.
  const auto part = [&](const std::string& table, const std::string& ends) {
    ClickHouseQuestion question("SELECT session, installation, min(if(" + time + " = 0, " + none +
                                ", " + time + ")) AS begin, max(" + time + ") AS end, " + ends +
                                " FROM " + table + " WHERE session != ''");
    return question.andIf("installation = ", filter.installation)
        .then(" GROUP BY session, installation")
        .sql();
  };
  const std::string records =
      part("events",
           "max(category = 'Application' AND subcategory = 'Crashed') AS crash,"
           " max(category = 'Application' AND subcategory = 'Stopped') AS stop") +
      " UNION ALL " + part("environments", "toUInt8(0) AS crash, toUInt8(0) AS stop");
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
