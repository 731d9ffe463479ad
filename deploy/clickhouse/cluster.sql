-- The tables of a store on several ClickHouse servers: replicas of each shard, which ZooKeeper (or ClickHouse Keeper)
-- coordinates, and distributed tables before them. Run it once, on one of the servers:
--
--   clickhouse-client --multiquery --database analytics < cluster.sql
--
-- The cluster and the database are both called "analytics"; the database must exist on each server. The configuration of
-- the servers names the cluster, in which each shard has internal_replication, and the macros {shard} and {replica}.
-- single.sql describes the columns.

CREATE TABLE IF NOT EXISTS events_local ON CLUSTER analytics (
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
  category String,
  subcategory String,
  event String,
  detail_keys Array(String),
  detail_values Array(String),
  kind Enum8('other' = 0, 'started' = 1, 'cancelled' = 2, 'crashed' = 3, 'stopped' = 4, 'memory' = 5) DEFAULT multiIf(
    category = 'Command' AND subcategory = 'Started', 'started',
    category = 'Command' AND subcategory = 'Cancelled', 'cancelled',
    category = 'Application' AND subcategory = 'Crashed', 'crashed',
    category = 'Application' AND subcategory = 'Stopped', 'stopped',
    category = 'MemoryUsage' AND subcategory = 'Application', 'memory', 'other'),
  session_id UInt64 DEFAULT cityHash64(session, installation)
) ENGINE = ReplicatedReplacingMergeTree('/clickhouse/analytics/{shard}/events', '{replica}', precedence)
PARTITION BY toRelativeMonthNum(day) % 48 ORDER BY key;

CREATE TABLE IF NOT EXISTS events ON CLUSTER analytics AS analytics.events_local
ENGINE = Distributed(analytics, analytics, events_local, sipHash64(session));

CREATE TABLE IF NOT EXISTS session_days_local ON CLUSTER analytics (
  day Date,
  session String,
  installation String,
  user String,
  received_day Date,
  first AggregateFunction(min, UInt64),
  last AggregateFunction(max, UInt64),
  crashed AggregateFunction(max, UInt8),
  stopped AggregateFunction(max, UInt8),
  memory AggregateFunction(max, Int64)
) ENGINE = ReplicatedAggregatingMergeTree('/clickhouse/analytics/{shard}/session_days', '{replica}')
ORDER BY (day, session, installation, user, received_day);

CREATE TABLE IF NOT EXISTS session_days ON CLUSTER analytics AS analytics.session_days_local
ENGINE = Distributed(analytics, analytics, session_days_local, sipHash64(session));

CREATE MATERIALIZED VIEW IF NOT EXISTS session_days_view ON CLUSTER analytics TO analytics.session_days_local AS
WITH
  toUInt64(toUInt32(time)) * 1000 + time_ms AS milliseconds,
  if(kind = 'memory', detail_values[indexOf(detail_keys, 'Max')], '') AS reading
SELECT day, session, installation, user, toDate(received, 'UTC') AS received_day,
  minState(if(milliseconds = 0, 9999999999999999, milliseconds)) AS first,
  maxState(milliseconds) AS last,
  maxState(kind = 'crashed') AS crashed,
  maxState(kind = 'stopped') AS stopped,
  maxState(if(match(reading, '^[0-9]{1,18}$'), toInt64OrZero(reading), toInt64(-1))) AS memory
FROM analytics.events_local
GROUP BY day, session, installation, user, received_day;

CREATE TABLE IF NOT EXISTS environments_local ON CLUSTER analytics (
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
  version String
) ENGINE = ReplicatedReplacingMergeTree('/clickhouse/analytics/{shard}/environments', '{replica}', precedence)
ORDER BY key;

CREATE TABLE IF NOT EXISTS environments ON CLUSTER analytics AS analytics.environments_local
ENGINE = Distributed(analytics, analytics, environments_local, sipHash64(session));

CREATE TABLE IF NOT EXISTS refused_local ON CLUSTER analytics (
  key FixedString(24),
  received DateTime('UTC'),
  received_ms UInt16,
  place UInt32,
  user String,
  count UInt32,
  precedence UInt64,
  text String,
  reason String
) ENGINE = ReplicatedReplacingMergeTree('/clickhouse/analytics/{shard}/refused', '{replica}', precedence)
ORDER BY key;

CREATE TABLE IF NOT EXISTS refused ON CLUSTER analytics AS analytics.refused_local
ENGINE = Distributed(analytics, analytics, refused_local, sipHash64(key));

CREATE TABLE IF NOT EXISTS schema_version ON CLUSTER analytics (
  version UInt32,
  checked DateTime('UTC')
) ENGINE = ReplicatedReplacingMergeTree('/clickhouse/analytics/{shard}/schema_version', '{replica}', checked)
ORDER BY version;

INSERT INTO schema_version SELECT 1, now();
