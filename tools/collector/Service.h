#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

#include <boost/asio/thread_pool.hpp>

#include "tools/collector/Limits.h"
#include "tools/collector/LogIn.h"
#include "tools/collector/Metrics.h"
#include "tools/collector/Replaceable.h"
#include "tools/collector/StoreWriter.h"
#include "tools/collector/TlsSettings.h"

namespace qel::collector {

/// What all connections of a server share. Thread-safe.
class Service {
 public:
  Service(const Limits& settings, StoreWriter& storeWriter, Metrics& counters,
          std::shared_ptr<Users> users, TlsContext context)
      : limits(settings),
        writer(storeWriter),
        metrics(counters),
        logIn(std::move(users)),
        tls(std::move(context)) {}

  /// Reserves memory for a body. Returns false if too much is reserved. Large bodies can reserve
  /// only half of the memory, so that they never keep small ones out.
  bool reserve(std::size_t bytes) {
    const auto most = limits.bytesInFlight / (bytes > limits.largeBody ? 2 : 1);
    if ((bytesInFlight += bytes) <= most) {
      return true;
    }
    release(bytes);
    return false;
  }
  void release(std::size_t bytes) { bytesInFlight -= bytes; }

  const Limits limits;
  StoreWriter& writer;
  Metrics& metrics;
  LogIn logIn;
  Replaceable<TlsContext> tls;
  std::atomic<std::size_t> connections = 0;
  std::atomic<std::size_t> bytesInFlight = 0;
  std::atomic<bool> isStopping = false;
  boost::asio::thread_pool parsers{2};
  boost::asio::thread_pool largeParser{1};
};

}  // namespace qel::collector
