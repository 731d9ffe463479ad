#pragma once

namespace qel::collector {

/// The statements of deploy/clickhouse/single.sql, each on lines of its own that end with a
/// semicolon.
extern const char* const clickHouseSchema;

}  // namespace qel::collector
