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
  detail_values Array(String)
) ENGINE = ReplacingMergeTree(precedence) PARTITION BY toRelativeMonthNum(day) % 48 ORDER BY key;

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
