#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/collector/StoreReader.h"

namespace qel::collector {

/// A statement with the values of its parameters.
class SqliteQuery {
 public:
  explicit SqliteQuery(std::string sql) : sql_(std::move(sql)) {}

  SqliteQuery& then(std::string_view sql);
  /// Adds " AND condition" with one parameter, unless the value is empty.
  SqliteQuery& andIf(std::string_view condition, const std::string& value);

  const std::string& sql() const { return sql_; }
  const std::vector<std::string>& values() const { return values_; }

 private:
  std::string sql_;
  std::vector<std::string> values_;
};

/// An expression for an ID without braces and hyphens, in upper case. `id` is an expression, too.
std::string normalizedId(const std::string& id);

/// The ID of the last row that the caller of "live" knows. Throws `std::invalid_argument` if the
/// cursor is none.
std::int64_t idOf(const std::string& cursor);

/// The statement that answers a figure. Throws `std::invalid_argument` if there is no such figure,
/// or the cursor is none.
SqliteQuery queryOf(std::string_view figure, const Filter& filter);

}  // namespace qel::collector
