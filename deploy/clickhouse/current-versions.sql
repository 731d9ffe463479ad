-- Optional, for ClickHouse 24 or newer, after single.sql: a smaller store whose rows survive a loss of power. Leave out
-- what you do not want. Debian's 18.16 has none of it. With cluster.sql, change the tables events_local,
-- session_days_local, environments_local and refused_local instead, with ON CLUSTER analytics.

-- An insert is confirmed when it is on disk.
ALTER TABLE events MODIFY SETTING fsync_after_insert = 1, fsync_part_directory = 1;
ALTER TABLE session_days MODIFY SETTING fsync_after_insert = 1, fsync_part_directory = 1;
ALTER TABLE environments MODIFY SETTING fsync_after_insert = 1, fsync_part_directory = 1;
ALTER TABLE refused MODIFY SETTING fsync_after_insert = 1, fsync_part_directory = 1;

-- About a third less disk space.
ALTER TABLE events MODIFY COLUMN text String CODEC(ZSTD(3));
ALTER TABLE events MODIFY COLUMN key FixedString(24) CODEC(ZSTD(1));
ALTER TABLE environments MODIFY COLUMN text String CODEC(ZSTD(3));
ALTER TABLE refused MODIFY COLUMN text String CODEC(ZSTD(3));

-- Faster questions. The collector accepts these types.
ALTER TABLE events MODIFY COLUMN category LowCardinality(String);
ALTER TABLE events MODIFY COLUMN subcategory LowCardinality(String);
ALTER TABLE events MODIFY COLUMN event LowCardinality(String);
ALTER TABLE events MODIFY COLUMN user LowCardinality(String);
ALTER TABLE environments MODIFY COLUMN version LowCardinality(String);
ALTER TABLE events ADD INDEX IF NOT EXISTS by_installation installation TYPE bloom_filter GRANULARITY 4;

-- Instead of the collector's option --retention.
ALTER TABLE events MODIFY TTL received + INTERVAL 400 DAY;
ALTER TABLE session_days MODIFY TTL received_day + INTERVAL 400 DAY;
ALTER TABLE environments MODIFY TTL received + INTERVAL 400 DAY;
ALTER TABLE refused MODIFY TTL received + INTERVAL 400 DAY;
