-- The tables of a store on one ClickHouse server, from version 18.16 on. qel-collector --create runs these statements.
--
-- A text that is sent again has the same key. ReplacingMergeTree keeps the row with the highest precedence: the highest
-- count, then the earliest arrival. Until it has merged, only questions with FINAL see each row once. The key and the
-- partition depend on the text alone. A package of any dates has rows in at most 48 partitions.

CREATE TABLE IF NOT EXISTS events (
  key FixedString(24),           -- of the text; the rows of a session are neighbours
  received DateTime('UTC'),
  received_ms UInt16,
  place UInt32,                  -- orders the rows that one collector received at the same time
  user String,                   -- who sent the text first
  count UInt32,                  -- how often one package had the text
  precedence UInt64,
  text String,                   -- as it was sent
  session String,
  installation String,
  day Date,                      -- of the client's clock, UTC; 1970-01-01 if the text has no time
  time DateTime('UTC'),
  time_ms UInt16,
  category String,
  subcategory String,
  event String,
  detail_keys Array(String),
  detail_values Array(String),
  -- For fast questions; no collector writes them.
  kind Enum8('other' = 0, 'started' = 1, 'cancelled' = 2, 'crashed' = 3, 'stopped' = 4, 'memory' = 5) DEFAULT multiIf(
    category = 'Command' AND subcategory = 'Started', 'started',
    category = 'Command' AND subcategory = 'Cancelled', 'cancelled',
    category = 'Application' AND subcategory = 'Crashed', 'crashed',
    category = 'Application' AND subcategory = 'Stopped', 'stopped',
    category = 'MemoryUsage' AND subcategory = 'Application', 'memory', 'other'),
  session_id UInt64 DEFAULT cityHash64(session, installation)
) ENGINE = ReplacingMergeTree(precedence) PARTITION BY toRelativeMonthNum(day) % 48 ORDER BY key;

-- What the page asks of sessions, summed up for each day. A row that is sent twice changes no minimum and no maximum,
-- so the answers are right before ClickHouse has merged. User and day of arrival are there for deletions.
CREATE TABLE IF NOT EXISTS session_days (
  day Date,
  session String,
  installation String,
  user String,
  received_day Date,
  first AggregateFunction(min, UInt64),  -- time in milliseconds since 1970; 9999999999999999 if no text has one
  last AggregateFunction(max, UInt64),   -- 0 if no text has one
  crashed AggregateFunction(max, UInt8),
  stopped AggregateFunction(max, UInt8),
  memory AggregateFunction(max, Int64)   -- highest reading in KB; -1 if there is none
) ENGINE = AggregatingMergeTree ORDER BY (day, session, installation, user, received_day);

-- Runs with each insert into events. If it fails, the insert is not confirmed, and the sender sends the rows again.
CREATE MATERIALIZED VIEW IF NOT EXISTS session_days_view TO session_days AS
WITH
  toUInt64(toUInt32(time)) * 1000 + time_ms AS milliseconds,
  if(kind = 'memory', detail_values[indexOf(detail_keys, 'Max')], '') AS reading
SELECT day, session, installation, user, toDate(received, 'UTC') AS received_day,
  minState(if(milliseconds = 0, 9999999999999999, milliseconds)) AS first,
  maxState(milliseconds) AS last,
  maxState(kind = 'crashed') AS crashed,
  maxState(kind = 'stopped') AS stopped,
  maxState(if(match(reading, '^[0-9]{1,18}$'), toInt64OrZero(reading), toInt64(-1))) AS memory
FROM events
GROUP BY day, session, installation, user, received_day;

CREATE TABLE IF NOT EXISTS environments (
  key FixedString(24),
  received DateTime('UTC'),
  received_ms UInt16,
  place UInt32,
  user String,
  count UInt32,
  precedence UInt64,
  text String,
  session String,
  installation String,
  day Date,
  time DateTime('UTC'),
  time_ms UInt16,
  version String                 -- of the program
) ENGINE = ReplacingMergeTree(precedence) ORDER BY key;

CREATE TABLE IF NOT EXISTS refused (
  key FixedString(24),
  received DateTime('UTC'),
  received_ms UInt16,
  place UInt32,
  user String,
  count UInt32,
  precedence UInt64,
  text String,
  reason String
) ENGINE = ReplacingMergeTree(precedence) ORDER BY key;

-- A collector also writes to this table to find out whether the store takes rows.
CREATE TABLE IF NOT EXISTS schema_version (
  version UInt32,
  checked DateTime('UTC')
) ENGINE = ReplacingMergeTree(checked) ORDER BY version;

INSERT INTO schema_version SELECT 1, now();
