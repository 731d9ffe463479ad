#include "tools/collector/OpenStore.h"

#include <CLI/CLI.hpp>

#include "host/QelUtilities/PathText.h"
#include "tools/collector/ClickHouseReader.h"
#include "tools/collector/ClickHouseStore.h"
#include "tools/collector/SqliteReader.h"
#include "tools/collector/SqliteStore.h"
#include "tools/common/InputError.h"

namespace qel::collector {

void addStoreOptions(CLI::App& command, StoreOptions& options, bool isRequired) {
  command
      .add_option("--store", options.store,
                  "SQLite file for received data, or clickhouse://HOST:PORT/DATABASE "
                  "(clickhouses for TLS)")
      ->type_name("STORE")
      ->required(isRequired);
  command
      .add_option("--store-credentials", options.credentials,
                  "file with one line user:password for ClickHouse")
      ->type_name("FILE");
}

void addCreateOption(CLI::App& command, StoreOptions& options) {
  command.add_flag("--create", options.isCreated, "create the tables that ClickHouse lacks");
}

std::optional<ClickHouseAccess> clickHouseAccess(const StoreOptions& options) {
  auto access = parseClickHouse("--store", options.store);
  if (!access) {
    rejectForFile("--store-credentials", !options.credentials.empty());
    rejectForFile("--create", options.isCreated);
  } else if (!options.credentials.empty()) {
    readCredentials(options.credentials, *access);
  }
  return access;
}

void rejectForFile(const std::string& option, bool isGiven) {
  if (isGiven) {
    throw tools::InputError(option + ": an SQLite file has no such option; ClickHouse has it");
  }
}

std::unique_ptr<Store> openStore(const StoreOptions& options,
                                 const std::optional<ClickHouseAccess>& access) {
  if (access) {
    using Missing = ClickHouseStore::Missing;
    return std::make_unique<ClickHouseStore>(*access,
                                             options.isCreated ? Missing::Create : Missing::Fail);
  }
  return std::make_unique<SqliteStore>(utilities::pathFromUtf8(options.store));
}

std::unique_ptr<StoreReader> openReader(const StoreOptions& options,
                                        const std::optional<ClickHouseAccess>& access) {
  if (access) {
    return std::make_unique<ClickHouseReader>(*access);
  }
  return std::make_unique<SqliteReader>(utilities::pathFromUtf8(options.store));
}

}  // namespace qel::collector
