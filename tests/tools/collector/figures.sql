-- Answers the figures from the rows alone. Each answer begins with the common part. Times are
-- compared with what SQLite takes for a date, and real numbers are in thousandths. The tables
-- `past_events` and `past_environments` also have the removed rows of the sessions that are left,
-- in the order of arrival.

-- common
WITH session_versions AS (
  SELECT session, installation, version FROM (
    SELECT session, installation, version,
      row_number() OVER (PARTITION BY session, installation ORDER BY dated DESC, version DESC) AS place
    FROM (
      SELECT session, ifnull(installation, '') AS installation,
        CAST(json_extract(text, '$.CurrentActiveApplication.Version') AS TEXT) AS version,
        CASE WHEN date(time, '+0 days') = substr(time, 1, 10) THEN time ELSE '' END AS dated
      FROM past_environments WHERE session <> '')
    WHERE version <> '')
  WHERE place = 1
), all_rows AS (
  SELECT e.key, e.count, ifnull(e.session, '') AS session, ifnull(e.installation, '') AS installation,
    e.time, CASE WHEN date(time, '+0 days') = substr(time, 1, 10) THEN substr(time, 1, 10) END AS day,
    ifnull(category, '') AS category, ifnull(subcategory, '') AS subcategory, ifnull(event, '') AS event,
    ifnull(version, '') AS version, text
  FROM events AS e
    LEFT JOIN session_versions AS v ON v.session = e.session AND v.installation = ifnull(e.installation, '')
), found AS (
  SELECT * FROM all_rows
  WHERE (:version = '' OR version = :version) AND (:installation = '' OR installation = :installation)
    AND (:from = '' OR day >= :from) AND (:until = '' OR day <= :until)
), all_records AS (
  SELECT session, ifnull(installation, '') AS installation, time, count, category, subcategory FROM events
  UNION ALL
  SELECT session, ifnull(installation, ''), time, 0, NULL, NULL FROM past_events
  UNION ALL
  SELECT session, ifnull(installation, ''), time, 0, NULL, NULL FROM past_environments
), all_sessions AS (
  SELECT r.session, r.installation, ifnull(version, '') AS version,
    min(CASE WHEN date(time, '+0 days') = substr(time, 1, 10) THEN time END) AS first,
    max(CASE WHEN date(time, '+0 days') = substr(time, 1, 10) THEN time END) AS last, sum(count) AS events,
    CASE WHEN sum(category = 'Application' AND subcategory = 'Crashed') > 0 THEN 'crashed'
      WHEN sum(category = 'Application' AND subcategory = 'Stopped') > 0 THEN 'stopped'
      ELSE 'unknown' END AS end
  FROM all_records AS r
    LEFT JOIN session_versions AS v ON v.session = r.session AND v.installation = r.installation
  WHERE r.session <> '' GROUP BY r.session, r.installation
), found_sessions AS (
  SELECT * FROM all_sessions
  WHERE (:version = '' OR version = :version) AND (:installation = '' OR installation = :installation)
    AND (:from = '' OR substr(last, 1, 10) >= :from) AND (:until = '' OR substr(first, 1, 10) <= :until)
)

-- events-by-day
SELECT day, category, sum(count) FROM found WHERE day IS NOT NULL GROUP BY 1, 2 ORDER BY 1, 2

-- installations-by-day
SELECT day, count(DISTINCT installation) FROM found
WHERE day IS NOT NULL AND installation <> '' GROUP BY 1 ORDER BY 1

-- installations-by-week
SELECT date(day, '-6 days', 'weekday 1'), count(DISTINCT installation) FROM found
WHERE day IS NOT NULL AND installation <> '' GROUP BY 1 ORDER BY 1

-- versions
SELECT version, count(DISTINCT nullif(installation, '')), count(*) FROM found_sessions
GROUP BY 1 ORDER BY 3 DESC, 1

-- crashes
SELECT version, code, command, sum(count), count(DISTINCT nullif(installation, '')),
  max(CASE place WHEN 1 THEN session END)
FROM (
  SELECT *, row_number() OVER (PARTITION BY version, code, command ORDER BY dated DESC, session DESC) AS place
  FROM (
    SELECT version, count, installation, session, CASE WHEN day IS NOT NULL THEN time END AS dated,
      ifnull(CAST(json_extract(text, '$.Details."Exception Code"') AS TEXT), '') AS code,
      ifnull((SELECT b.event FROM past_events AS b
        WHERE b.session = c.session AND b.session <> '' AND b.installation IS nullif(c.installation, '')
          AND b.category = 'Command' AND b.subcategory = 'Started'
          AND b.rowid < (SELECT max(rowid) FROM past_events WHERE key = c.key)
        ORDER BY b.rowid DESC LIMIT 1), '') AS command
    FROM found AS c WHERE category = 'Application' AND subcategory = 'Crashed'))
GROUP BY 1, 2, 3 ORDER BY 4 DESC, 1, 2, 3

-- commands
SELECT event, started, cancelled,
  CASE WHEN started > 0 THEN CAST(round(1000.0 * cancelled / started) AS INTEGER) END
FROM (
  SELECT event, sum(CASE subcategory WHEN 'Started' THEN count ELSE 0 END) AS started,
    sum(CASE subcategory WHEN 'Cancelled' THEN count ELSE 0 END) AS cancelled
  FROM found
  WHERE day IS NOT NULL AND category = 'Command' AND subcategory IN ('Started', 'Cancelled') GROUP BY event)
ORDER BY 2 DESC, 3 DESC, 1 LIMIT 30

-- memory
SELECT week, sessions, max(CASE place WHEN sessions * 50 / 100 THEN size END),
  max(CASE place WHEN sessions * 90 / 100 THEN size END), max(CASE place WHEN sessions * 99 / 100 THEN size END)
FROM (
  SELECT week, CAST(round(1000 * size / 1024.0) AS INTEGER) AS size,
    row_number() OVER (PARTITION BY week ORDER BY size) - 1 AS place, count(*) OVER (PARTITION BY week) AS sessions
  FROM (
    SELECT date(day, '-6 days', 'weekday 1') AS week, max(CAST(reading AS INTEGER)) AS size
    FROM (SELECT f.session, f.installation, f.day, json_extract(p.text, '$.Details.Max') AS reading
      FROM (SELECT DISTINCT session, installation, day FROM found
        WHERE session <> '' AND day IS NOT NULL AND category = 'MemoryUsage') AS f
      JOIN past_events AS p ON p.session = f.session AND ifnull(p.installation, '') = f.installation
        AND substr(p.time, 1, 10) = f.day AND date(p.time, '+0 days') = f.day
      WHERE p.category = 'MemoryUsage' AND p.subcategory = 'Application')
    WHERE reading <> '' AND reading NOT GLOB '*[^0-9]*'
    GROUP BY week, session, installation))
GROUP BY week, sessions ORDER BY week

-- sessions
SELECT session, installation, version, first, last, events, end FROM found_sessions
ORDER BY first DESC, session DESC, installation LIMIT 200
