#include "tools/collector/ClickHouseFigures.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>

#include "tools/collector/ClickHouseQuestion.h"

namespace qel::collector {
namespace {

using Question = ClickHouseQuestion;

/// Characters, or bytes of a refused text.
constexpr const char* longestText = "20000";

/// "live" looks at this number of rows after its cursor.
constexpr const char* liveRows = "100000";

/// Rows that arrived later are not shown yet, because another collector may still be storing
/// earlier ones.
constexpr std::chrono::milliseconds timeOfInsert{500};

std::string eventsByDay(const Filter& filter) {
  // The inner question sorts the categories, so their numbers say which are the largest.
  return "SELECT day, shown, total FROM (SELECT day, shown, sum(events) AS total FROM (SELECT"
         " if(rowNumberInAllBlocks() < 50, category, '(others)') AS shown, days, sums FROM"
         " (SELECT category, groupArray(day) AS days, groupArray(copies) AS sums FROM"
         " (SELECT day, category, sum(copies) AS copies FROM (" +
         countsOfEvents("day, category", "day > toDate(0)", filter) +
         ") GROUP BY day, category) GROUP BY category ORDER BY sum(copies) DESC, category))"
         " ARRAY JOIN days AS day, sums AS events GROUP BY day, shown"
         " ORDER BY day DESC, shown LIMIT 20000) ORDER BY day, shown";
}

std::string installationsBy(const std::string& period, const std::string& name,
                            const Filter& filter) {
  return "SELECT * FROM (" +
         Question("SELECT " + period + " AS " + name +
                  ", uniqExact(installation) AS installations FROM session_days"
                  " WHERE day > toDate(0) AND installation != ''")
             .ofSessionDays(filter)
             .then(" GROUP BY " + name + " ORDER BY " + name + " DESC LIMIT 20000")
             .sql() +
         ") ORDER BY " + name;
}

std::string installationsByDay(const Filter& filter) {
  return installationsBy("day", "day", filter);
}

std::string installationsByWeek(const Filter& filter) {
  return installationsBy("toMonday(day)", "week", filter);
}

std::string versions(const Filter& filter) {
  return "SELECT version, uniqExactIf(installation, installation != '') AS installations,"
         " count() AS sessions FROM (" +
         sessionsOf(filter) + ") GROUP BY version ORDER BY sessions DESC, version LIMIT 200";
}

/// The copies of the events of a kind.
Question eventsOf(const std::string& columns, const std::string& kind) {
  return Question("SELECT " + columns + " FROM events PREWHERE kind = " + sqlLiteral(kind));
}

Question crashesOf(const std::string& columns, const Filter& filter) {
  return eventsOf(columns, "crashed").then(" WHERE 1").ofEvents(filter);
}

/// The last command that was started before each crash of `found` in its session. Sessions are
/// compared by their numbers, because their names are long. The commands and crashes of a session
/// are sorted together: a join of their times would compare each crash with each command.
std::string commandsBefore(const std::string& found, const Filter& filter) {
  const std::string started =
      eventsOf("session_id, " + std::string(timeOfRecord) + " AS moment, " + std::string(arrival) +
                   " AS arrival, place, 0 AS is_crash, toFixedString('', 24) AS key, event",
               "started")
          .then(" AND session_id IN (" + crashesOf("session_id", filter).sql() + ")")
          .sql();
  const auto member = [](const std::string& number, const std::string& name) {
    return "arrayMap(x -> x." + number + ", items) AS " + name;
  };
  return "SELECT arrayJoin(crashes) AS crash, command FROM (SELECT max(event) AS command,"
         " groupArrayIf(key, is_crash = 1) AS crashes FROM (SELECT session_id,"
         " arraySort(groupArray((moment, arrival, place, is_crash, key, event))) AS items, " +
         member("4", "kinds") + " FROM (" + started +
         " UNION ALL SELECT session_id, crash_time AS moment, arrival, place, 1 AS is_crash,"
         " crash AS key, '' AS event FROM (" +
         found + ") WHERE session != '') GROUP BY session_id) ARRAY JOIN " + member("5", "key") +
         ", " + member("6", "event") +
         ", kinds AS is_crash, arrayPushBack(arrayPopFront(kinds), 0) AS is_before_crash,"
         " arrayCumSum(x -> 1 - x, kinds) AS command_number"
         " WHERE is_crash OR is_before_crash GROUP BY session_id, command_number)";
}

std::string crashes(const Filter& filter) {
  const std::string found =
      crashesOf("key AS crash, session_id, session, installation, any(" +
                    std::string(timeOfRecord) + ") AS crash_time, min(" + std::string(arrival) +
                    ") AS arrival, argMin(place, " + std::string(arrival) +
                    ") AS place,"
                    " any(detail_values[indexOf(detail_keys, 'Exception Code')]) AS code,"
                    " max(count) AS copies",
                filter)
          .then(" GROUP BY key, session_id, session, installation")
          .sql();
  return "SELECT version, code, command, sum(copies) AS crashes,"
         " uniqExactIf(installation, installation != '') AS installations,"
         " argMax(session, concat(toString(10000000000000 + crash_time), session))"
         " AS latest_session FROM (SELECT session, installation, crash_time, code, copies, command"
         " FROM (" +
         found + ") ANY LEFT JOIN (" + commandsBefore(found, filter) +
         ") USING crash) ANY LEFT JOIN (" + versionsOfSessions +
         ") USING session, installation GROUP BY version, code, command"
         " ORDER BY crashes DESC, version, code, command LIMIT 200";
}

std::string commands(const Filter& filter) {
  return "SELECT command, started, cancelled, if(started > 0, cancelled / started, NULL) AS share"
         " FROM (SELECT event AS command, sumIf(copies, kind = 'started') AS started,"
         " sumIf(copies, kind = 'cancelled') AS cancelled FROM (" +
         countsOfEvents("event, kind", "kind IN ('started', 'cancelled') AND day > toDate(0)",
                        filter) +
         ") GROUP BY event) ORDER BY started DESC, cancelled DESC, command LIMIT 30";
}

std::string memory(const Filter& filter) {
  const auto percentile = [](const std::string& share) {
    return "sorted[intDiv(sessions * " + share + ", 100) + 1] / 1024 AS p" + share;
  };
  return Question("SELECT week, sessions, " + percentile("50") + ", " + percentile("90") + ", " +
                  percentile("99") +
                  " FROM (SELECT week, count() AS sessions, arraySort(groupArray(highest)) AS"
                  " sorted FROM (SELECT toMonday(day) AS week, session, installation,"
                  " maxMerge(memory) AS highest FROM session_days"
                  " WHERE session != '' AND day > toDate(0)")
      .ofSessionDays(filter)
      .then(
          " GROUP BY week, session, installation HAVING highest >= 0)"
          " GROUP BY week) ORDER BY week")
      .sql();
}

std::string sessions(const Filter& filter) {
  Question chosen(
      "SELECT session, installation, version, first, last, multiIf(crashed, 'crashed',"
      " stopped, 'stopped', 'unknown') AS end FROM (" +
      sessionsOf(filter) + ") WHERE 1");
  if (!filter.session.empty()) {
    chosen.then(" AND " + sessionBeginsWith(filter.session));
  }
  chosen.andIf("end = ", filter.end)
      .then(" ORDER BY first DESC, session DESC, installation LIMIT " +
            std::to_string(filter.limit));
  const auto time = [](const std::string& name) {
    return "if(" + name + " = 0, NULL, " + textOfMilliseconds(name) + ") AS " + name + "_text";
  };
  return "SELECT session, installation, version, first_text, last_text, copies, end FROM (SELECT "
         "session, installation, version, first AS begin, " +
         time("first") + ", " + time("last") + ", copies, end FROM (" + chosen.sql() +
         ") ANY LEFT JOIN (SELECT session, installation, sum(most) AS copies FROM (SELECT session,"
         " installation, max(count) AS most FROM events PREWHERE session_id IN"
         " (SELECT cityHash64(session, installation) FROM (" +
         chosen.sql() +
         ")) GROUP BY key, session, installation) GROUP BY session, installation)"
         " USING session, installation) ORDER BY begin DESC, session DESC, installation";
}

std::string arrivalText() { return textOfMilliseconds(std::string(arrival)); }

/// Milliseconds, place and key of a row. Texts of one length, so they sort as the rows.
const std::string cursorOfRow = "concat(toString(10000000000000 + " + std::string(arrival) +
                                "), '-', toString(10000000000 + place), '-', hex(key))";

/// The condition that a row arrived after the one of a cursor.
std::string arrivedAfter(const std::string& cursor) {
  constexpr std::string_view form = "10000000000000-10000000000-";
  constexpr std::size_t keyDigits = 48;
  const auto isOfForm = [&](std::size_t place) {
    const char c = cursor[place];
    const bool isDigit = c >= '0' && c <= '9';
    return place >= form.size() ? isDigit || (c >= 'A' && c <= 'F')
           : form[place] == '-' ? c == '-'
                                : isDigit;
  };
  bool isCursor = cursor.size() == form.size() + keyDigits;
  for (std::size_t place = 0; isCursor && place < cursor.size(); ++place) {
    isCursor = isOfForm(place);
  }
  if (!isCursor) {
    throw std::invalid_argument("after: there is no cursor " + cursor);
  }
  const std::string seconds = cursor.substr(1, form.find('-') - 4);
  return "received >= toDateTime(" + seconds + ") AND " + cursorOfRow + " > " + sqlLiteral(cursor);
}

/// The newest rows are found without their texts. After a cursor, few keys are looked up, and
/// `FINAL` removes those that have arrived before.
std::string live(const Filter& filter) {
  const auto now = std::chrono::floor<std::chrono::milliseconds>(
      std::chrono::system_clock::now().time_since_epoch() - timeOfInsert);
  const bool isNewest = filter.after.empty();
  const std::string after = isNewest ? "1" : arrivedAfter(filter.after);
  const std::string limit = " LIMIT " + std::to_string(filter.limit);
  Question keys(std::string("SELECT key FROM events") + (isNewest ? " FINAL" : "") + " WHERE " +
                after + " AND " + std::string(arrival) + " <= " + std::to_string(now.count()));
  if (!filter.from.empty() || !filter.until.empty()) {
    keys.then(" AND day > toDate(0)");
  }
  keys.ofEvents(filter);
  keys.then(isNewest ? " ORDER BY received DESC, received_ms DESC, place DESC, key DESC" + limit
                     : std::string(" ORDER BY received, received_ms, place LIMIT ") + liveRows);
  return "SELECT " + cursorOfRow + " AS cursor, " + arrivalText() +
         ", user, nullIf(session, ''), installation, category, nullIf(subcategory, ''), "
         "nullIf(event, ''),"
         " substringUTF8(text, 1, " +
         longestText + ") FROM events FINAL WHERE key IN (" + keys.sql() + ") AND " + after +
         " ORDER BY cursor" + limit;
}

std::string refused(const Filter& filter) {
  return Question("SELECT " + arrivalText() +
                  " AS received_text, user, reason, count,"
                  " substring(text, 1, " +
                  longestText + ") FROM refused FINAL WHERE 1")
      .andIf("toDate(received, 'UTC') >= ", filter.from)
      .andIf("toDate(received, 'UTC') <= ", filter.until)
      .then(" ORDER BY received_text DESC, place DESC LIMIT " + std::to_string(filter.limit))
      .sql();
}

std::string filters(const Filter& /*filter*/) {
  return std::string(
             "SELECT kind, value FROM (SELECT DISTINCT 'version' AS kind, version AS value"
             " FROM (") +
         versionsOfSessions +
         ") UNION ALL SELECT 'first-day' AS kind, toString(min(day)) AS value FROM session_days"
         " WHERE day > toDate(0) HAVING count() > 0"
         " UNION ALL SELECT 'last-day' AS kind, toString(max(day)) AS value FROM session_days"
         " WHERE day > toDate(0) HAVING count() > 0) ORDER BY kind, value LIMIT 500";
}

constexpr std::array<ClickHouseFigure, 11> figures{
    {{"events-by-day", "day,category,events", eventsByDay},
     {"installations-by-day", "day,installations", installationsByDay},
     {"installations-by-week", "week,installations", installationsByWeek},
     {"versions", "version,installations,sessions", versions},
     {"crashes", "version,code,command,crashes,installations,latest_session", crashes},
     {"commands", "command,started,cancelled,share", commands},
     {"memory", "week,sessions,p50,p90,p99", memory},
     {"sessions", "session,installation,version,first,last,events,end", sessions},
     {"live", "cursor,received,user,session,installation,category,subcategory,event,text", live},
     {"refused", "received,user,reason,count,text", refused},
     {"filters", "kind,value", filters}}};

}  // namespace

const ClickHouseFigure& clickHouseFigure(std::string_view name) {
  const auto* const found =
      std::ranges::find(figures, name, [](const auto& figure) { return figure.name; });
  if (found == figures.end()) {
    throw std::invalid_argument("there is no figure " + std::string(name));
  }
  return *found;
}

}  // namespace qel::collector
