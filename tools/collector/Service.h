#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

#include <boost/asio/thread_pool.hpp>

#include "host/QelUtilities/Mutex.h"
#include "tools/collector/HashChecks.h"
#include "tools/collector/Limits.h"
#include "tools/collector/Metrics.h"
#include "tools/collector/StoreWriter.h"
#include "tools/collector/TlsSettings.h"
#include "tools/collector/Users.h"

namespace qel::collector {

/// What all connections of a server share. Thread-safe.
class Service {
 public:
  Service(const Limits& settings, StoreWriter& storeWriter, Metrics& counters,
          std::shared_ptr<Users> users, TlsContext tls)
      : limits(settings),
        writer(storeWriter),
        metrics(counters),
        users_(std::move(users)),
        tls_(std::move(tls)) {}

  std::shared_ptr<Users> users() const {
    const utilities::MutexLock lock(mutex_);
    return users_;
  }
  TlsContext tls() const {
    const utilities::MutexLock lock(mutex_);
    return tls_;
  }
  void use(std::shared_ptr<Users> users) {
    const utilities::MutexLock lock(mutex_);
    users_.swap(users);
  }
  void use(TlsContext tls) {
    const utilities::MutexLock lock(mutex_);
    tls_.swap(tls);
  }

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
  std::atomic<std::size_t> connections = 0;
  std::atomic<std::size_t> bytesInFlight = 0;
  HashChecks hashChecks;
  std::atomic<bool> isStopping = false;
  boost::asio::thread_pool parsers{2};
  boost::asio::thread_pool largeParser{1};
  boost::asio::thread_pool hashChecker{1};

 private:
  mutable utilities::Mutex mutex_;
  std::shared_ptr<Users> users_ QEL_GUARDED_BY(mutex_);
  TlsContext tls_ QEL_GUARDED_BY(mutex_);
};

}  // namespace qel::collector
