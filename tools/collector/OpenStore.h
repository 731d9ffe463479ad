#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tools/collector/ClickHouseAccess.h"
#include "tools/collector/Store.h"
#include "tools/collector/StoreReader.h"

namespace CLI {
class App;
}

namespace qel::collector {

/// Which store is used, as the command line says.
struct StoreOptions {
  std::string store;  ///< an SQLite file, or an address of ClickHouse
  std::string credentials;
  bool isCreated = false;  ///< whether missing tables of ClickHouse are created
};

/// Adds the options to a program or a command, which may lack `--create`.
/// @{
void addStoreOptions(CLI::App& command, StoreOptions& options, bool isRequired);
void addCreateOption(CLI::App& command, StoreOptions& options);
/// @}

/// The database of ClickHouse and its credentials; null if the store is an SQLite file. Throws
/// `InputError` for a malformed address, a credentials file that cannot be used, or options that an
/// SQLite file does not have.
std::optional<ClickHouseAccess> clickHouseAccess(const StoreOptions& options);

/// Throws `InputError` if an option was given that an SQLite file does not have.
void rejectForFile(const std::string& option, bool isGiven);

/// Opens the store. `access` is what `clickHouseAccess` returned for it. Throws `StoreError`.
/// @{
std::unique_ptr<Store> openStore(const StoreOptions& options,
                                 const std::optional<ClickHouseAccess>& access);
std::unique_ptr<StoreReader> openReader(const StoreOptions& options,
                                        const std::optional<ClickHouseAccess>& access);
/// @}

}  // namespace qel::collector
