#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include <boost/asio/thread_pool.hpp>

#include "host/QelUtilities/Mutex.h"
#include "tools/collector/Metrics.h"
#include "tools/collector/StoreWriter.h"
#include "tools/collector/TlsSettings.h"
#include "tools/collector/Users.h"

namespace qel::collector {

/// The limits of connections and requests. Sizes are in bytes.
struct Limits {
  std::size_t connections = 20'000;
  std::size_t head = std::size_t{32} << 10;
  /// Far larger than any row a client can store, because a row that the server always rejects would
  /// block all later rows.
  std::size_t body = std::size_t{64} << 20;
  std::size_t bytesInFlight = std::size_t{256} << 20;
  /// Parsing a malicious body takes several times its size in memory, so only one body above this
  /// size is parsed at a time. A client's body has at most a million bytes plus one row.
  std::size_t largeBody = std::size_t{2} << 20;
  std::size_t hashChecks = 32;  ///< that wait for the thread that computes them

  std::chrono::seconds headTime{10};    ///< from the start or the last answer to the end of a head
  std::chrono::seconds answerTime{10};  ///< to send an answer
  /// A body is cut if it does not grow by `progress` within `progressTime`.
  std::chrono::seconds progressTime{10};
  std::size_t progress = std::size_t{64} << 10;
  /// After the last answer, the time in which further bytes are read and discarded. Otherwise the
  /// system would reset the connection, and the client could lose the answer.
  std::chrono::seconds lingerTime{5};
};

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
  std::atomic<std::size_t> hashChecks = 0;
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
