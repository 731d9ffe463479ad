#include "tools/collector/OpenStore.h"

#include "host/QelUtilities/PathText.h"
#include "tools/collector/ClickHouseStore.h"
#include "tools/collector/SqliteStore.h"
#include "tools/common/InputError.h"

namespace qel::collector {
namespace {

void rejectForFile(const std::string& option, bool isGiven) {
  if (isGiven) {
    throw tools::InputError(option + ": an SQLite file has no such option; it needs --store " +
                            "clickhouse://HOST:PORT/DATABASE");
  }
}

}  // namespace

std::optional<ClickHouseAccess> clickHouseAccess(const StoreOptions& options) {
  auto access = parseClickHouse("--store", options.store);
  if (!access) {
    rejectForFile("--store-credentials", !options.credentials.empty());
    rejectForFile("--create", options.isCreated);
    rejectForFile("--batch-time", options.batchMilliseconds.has_value());
    rejectForFile("--batch-rows", options.batchRows.has_value());
  } else if (!options.credentials.empty()) {
    readCredentials(options.credentials, *access);
  }
  return access;
}

std::unique_ptr<Store> openStore(const StoreOptions& options) {
  if (const auto access = clickHouseAccess(options)) {
    using Missing = ClickHouseStore::Missing;
    return std::make_unique<ClickHouseStore>(*access,
                                             options.isCreated ? Missing::Create : Missing::Fail);
  }
  return std::make_unique<SqliteStore>(utilities::pathFromUtf8(options.store));
}

}  // namespace qel::collector
