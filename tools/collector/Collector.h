#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/collector/OpenStore.h"
#include "tools/collector/Users.h"

namespace qel::collector {

struct CollectorOptions {
  std::string listen = "127.0.0.1:8443";
  std::string admin;    ///< empty: none
  std::string readers;  ///< users file of those who may read the page; empty: no page
  std::vector<std::string> behind;
  std::string certificate;
  std::string key;
  std::string credentials;
  StoreOptions store;
  std::optional<std::uint32_t> batchMilliseconds;  ///< only for ClickHouse, as `batchRows`
  std::optional<std::size_t> batchRows;
  std::uint32_t retentionDays = 0;  ///< 0: unlimited
  UserLimits userLimits;
};

/// Receives packages until SIGINT or SIGTERM. Reads the certificate, the users and the readers
/// again after SIGHUP or when their files have changed. Prints where it listens. Throws
/// `tools::InputError` for options or files that cannot be used, and `qel::exception` if the store
/// or an address cannot be used.
void collect(const CollectorOptions& options);

}  // namespace qel::collector
