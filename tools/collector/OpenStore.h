#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "tools/collector/ClickHouseAccess.h"
#include "tools/collector/Store.h"

namespace qel::collector {

/// Which store is used, as the command line says.
struct StoreOptions {
  std::string store;  ///< an SQLite file, or an address of ClickHouse
  std::string credentials;
  bool isCreated = false;
  std::optional<std::uint32_t> batchMilliseconds;
  std::optional<std::size_t> batchRows;
};

/// The database of ClickHouse and its credentials; null if the store is an SQLite file. Throws
/// `InputError` for a malformed address, a credentials file that cannot be used, or options that
/// an SQLite file does not have.
std::optional<ClickHouseAccess> clickHouseAccess(const StoreOptions& options);

/// Opens the store. Throws as `clickHouseAccess`, and `StoreError`.
std::unique_ptr<Store> openStore(const StoreOptions& options);

}  // namespace qel::collector
