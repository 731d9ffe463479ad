#include "tools/collector/SqliteFigures.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>

namespace qel::collector {
namespace {

constexpr const char* monday = "date(day, '-6 days', 'weekday 1')";

/// "live" looks at this number of rows, the newest ones.
constexpr const char* liveRows = "100000";
/// Characters, or bytes of a refused text.
constexpr const char* longestText = "20000";

SqliteQuery& inDays(SqliteQuery& query, const Filter& filter) {
  return query.andIf("day >= ?", filter.from).andIf("day <= ?", filter.until);
}

/// For a query of `summary_sessions`.
SqliteQuery& inSessions(SqliteQuery& query, const Filter& filter) {
  return query.andIf("version = ?", filter.version).andIf("installation = ?", filter.installation);
}

/// For a query of `summary_sessions`: those that ran in these days, at least in part.
SqliteQuery& runningIn(SqliteQuery& query, const Filter& filter) {
  return inSessions(query, filter)
      .andIf("substr(last, 1, 10) >= ?", filter.from)
      .andIf("substr(first, 1, 10) <= ?", filter.until);
}

/// For a query of `summary_daily`.
SqliteQuery& ofDaily(SqliteQuery& query, const Filter& filter) {
  inDays(query, filter);
  if (filter.version.empty() && filter.installation.empty()) {
    return query;
  }
  query.then(" AND session IN (SELECT id FROM summary_sessions WHERE true");
  return inSessions(query, filter).then(")");
}

SqliteQuery eventsByDay(const Filter& filter) {
  SqliteQuery query(
      "WITH counted AS MATERIALIZED (SELECT day, name, sum(value) AS events FROM summary_daily"
      " WHERE kind = 'category'");
  return ofDaily(query, filter)
      .then(
          " GROUP BY day, name), largest AS MATERIALIZED"
          " (SELECT name FROM counted GROUP BY name ORDER BY sum(events) DESC, name LIMIT 50)"
          " SELECT * FROM (SELECT day, CASE WHEN name IN (SELECT name FROM largest) THEN name"
          " ELSE '(others)' END AS category, sum(events) AS events FROM counted GROUP BY 1, 2"
          " ORDER BY 1 DESC, 2 LIMIT 20000) ORDER BY day, category");
}

/// The installations that had an event in a day, or in another period that is computed from it.
SqliteQuery installationsBy(const std::string& period, const std::string& name,
                            const Filter& filter) {
  SqliteQuery query("SELECT * FROM (SELECT " + period + " AS " + name +
                    ", count(DISTINCT installation) AS installations FROM"
                    " (SELECT DISTINCT day, session FROM summary_daily WHERE kind = 'category'");
  ofDaily(query, filter);
  return query.then(
      ") AS active JOIN summary_sessions ON id = active.session WHERE installation <> ''"
      " GROUP BY 1 ORDER BY 1 DESC LIMIT 20000) ORDER BY 1");
}

SqliteQuery installationsByDay(const Filter& filter) {
  return installationsBy("day", "day", filter);
}

SqliteQuery installationsByWeek(const Filter& filter) {
  return installationsBy(monday, "week", filter);
}

SqliteQuery versions(const Filter& filter) {
  SqliteQuery query(
      "SELECT version, count(DISTINCT nullif(installation, '')) AS installations,"
      " count(*) AS sessions FROM summary_sessions WHERE session <> ''");
  return runningIn(query, filter)
      .then(" GROUP BY version ORDER BY sessions DESC, version LIMIT 200");
}

SqliteQuery crashes(const Filter& filter) {
  SqliteQuery query(
      "WITH found AS (SELECT version, code, command, count, installation, time, s.session AS name,"
      " substr(time, 1, 10) AS day FROM summary_crashes AS c"
      " JOIN summary_sessions AS s ON s.id = c.session), chosen AS (SELECT *, row_number() OVER"
      " (PARTITION BY version, code, command ORDER BY time DESC, name DESC) AS place"
      " FROM found WHERE true");
  inSessions(inDays(query, filter), filter);
  return query.then(
      ") SELECT version, code, command, sum(count) AS crashes,"
      " count(DISTINCT nullif(installation, '')) AS installations,"
      " max(CASE place WHEN 1 THEN name END) AS latest_session FROM chosen"
      " GROUP BY version, code, command ORDER BY crashes DESC, version, code, command LIMIT 200");
}

SqliteQuery commands(const Filter& filter) {
  SqliteQuery query(
      "SELECT command, started, cancelled, CASE WHEN started > 0 THEN 1.0 * cancelled / started END"
      " AS share FROM (SELECT name AS command,"
      " sum(CASE kind WHEN 'started' THEN value ELSE 0 END) AS started,"
      " sum(CASE kind WHEN 'cancelled' THEN value ELSE 0 END) AS cancelled"
      " FROM summary_daily WHERE kind IN ('started', 'cancelled')");
  return ofDaily(query, filter)
      .then(" GROUP BY name) ORDER BY started DESC, cancelled DESC, command LIMIT 30");
}

SqliteQuery memory(const Filter& filter) {
  SqliteQuery query(std::string("WITH highest AS (SELECT ") + monday +
                    " AS week, max(value) AS kilobytes FROM summary_daily WHERE kind = 'memory'");
  return ofDaily(query, filter)
      .then(
          " GROUP BY week, session), ranked AS (SELECT week, kilobytes / 1024.0 AS megabytes,"
          " row_number() OVER (PARTITION BY week ORDER BY kilobytes) - 1 AS place,"
          " count(*) OVER (PARTITION BY week) AS sessions FROM highest)"
          " SELECT week, sessions,"
          " max(CASE place WHEN sessions * 50 / 100 THEN megabytes END) AS p50,"
          " max(CASE place WHEN sessions * 90 / 100 THEN megabytes END) AS p90,"
          " max(CASE place WHEN sessions * 99 / 100 THEN megabytes END) AS p99"
          " FROM ranked GROUP BY week, sessions ORDER BY week");
}

SqliteQuery sessions(const Filter& filter) {
  SqliteQuery query(
      "SELECT * FROM (SELECT session, installation, version, first, last, events,"
      " CASE WHEN crashed > 0 THEN 'crashed' WHEN stopped > 0 THEN 'stopped' ELSE 'unknown' END"
      " AS end FROM summary_sessions WHERE session <> '') WHERE true");
  return runningIn(query, filter)
      .andIf("instr(" + normalizedId("session") + ", " + normalizedId("?") + ") = 1",
             filter.session)
      .andIf("end = ?", filter.end)
      .then(" ORDER BY first DESC, session DESC, installation LIMIT " +
            std::to_string(filter.limit));
}

SqliteQuery live(const Filter& filter) {
  SqliteQuery query(std::string("WITH found AS (SELECT * FROM events WHERE id >"
                                " (SELECT ifnull(max(id), 0) FROM events) - ") +
                    liveRows);
  if (!filter.after.empty()) {
    query.then(" AND id > " + std::to_string(idOf(filter.after)));
  }
  if (!filter.from.empty() || !filter.until.empty()) {
    query.then(" AND date(time, '+0 days') = substr(time, 1, 10)")
        .andIf("substr(time, 1, 10) >= ?", filter.from)
        .andIf("substr(time, 1, 10) <= ?", filter.until);
  }
  query.andIf("installation = ?", filter.installation)
      .andIf(
          "EXISTS (SELECT 1 FROM summary_sessions AS s WHERE s.session = events.session"
          " AND s.installation = ifnull(events.installation, '') AND s.version = ?)",
          filter.version)
      .then(filter.after.empty() ? " ORDER BY id DESC LIMIT " : " ORDER BY id LIMIT ")
      .then(std::to_string(filter.limit));
  return query.then(
      std::string(") SELECT CAST(id AS TEXT) AS cursor, received, user, session, installation,"
                  " category, subcategory, event, substr(text, 1, ") +
      longestText + ") AS text FROM found ORDER BY id");
}

SqliteQuery refused(const Filter& filter) {
  SqliteQuery query(std::string("SELECT received, user, reason, count, substr(text, 1, ") +
                    longestText + ") AS text FROM refused WHERE true");
  return query.andIf("substr(received, 1, 10) >= ?", filter.from)
      .andIf("substr(received, 1, 10) <= ?", filter.until)
      .then(" ORDER BY id DESC LIMIT " + std::to_string(filter.limit));
}

SqliteQuery filters(const Filter& /*filter*/) {
  return SqliteQuery(
      "SELECT 'version' AS kind, version AS value FROM summary_sessions WHERE version <> ''"
      " UNION SELECT 'first-day', day FROM"
      " (SELECT min(day) AS day FROM summary_daily WHERE kind = 'category') WHERE day IS NOT NULL"
      " UNION SELECT 'last-day', day FROM"
      " (SELECT max(day) AS day FROM summary_daily WHERE kind = 'category') WHERE day IS NOT NULL"
      " ORDER BY kind, value LIMIT 500");
}

struct Figure {
  std::string_view name;
  SqliteQuery (*query)(const Filter& filter);
};

constexpr std::array<Figure, 11> figures{{{"events-by-day", eventsByDay},
                                          {"installations-by-day", installationsByDay},
                                          {"installations-by-week", installationsByWeek},
                                          {"versions", versions},
                                          {"crashes", crashes},
                                          {"commands", commands},
                                          {"memory", memory},
                                          {"sessions", sessions},
                                          {"live", live},
                                          {"refused", refused},
                                          {"filters", filters}}};

}  // namespace

std::string normalizedId(const std::string& id) {
  return "replace(replace(replace(upper(" + id + "), '-', ''), '{', ''), '}', '')";
}

SqliteQuery& SqliteQuery::then(std::string_view sql) {
  sql_ += sql;
  return *this;
}

SqliteQuery& SqliteQuery::andIf(std::string_view condition, const std::string& value) {
  if (!value.empty()) {
    sql_.append(" AND ").append(condition);
    values_.push_back(value);
  }
  return *this;
}

std::int64_t idOf(const std::string& cursor) {
  std::int64_t id = 0;
  const char* const end = cursor.data() + cursor.size();
  const auto [parsed, error] = std::from_chars(cursor.data(), end, id);
  if (error != std::errc() || parsed != end) {
    throw std::invalid_argument("after: there is no cursor " + cursor);
  }
  return id;
}

SqliteQuery queryOf(std::string_view figure, const Filter& filter) {
  const auto* const found = std::find_if(figures.begin(), figures.end(),
                                         [&](const Figure& known) { return known.name == figure; });
  if (found == figures.end()) {
    throw std::invalid_argument("there is no figure " + std::string(figure));
  }
  return found->query(filter);
}

}  // namespace qel::collector
