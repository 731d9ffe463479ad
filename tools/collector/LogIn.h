#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <boost/asio/awaitable.hpp>
#include <boost/asio/thread_pool.hpp>

#include "tools/collector/HashChecks.h"
#include "tools/collector/Replaceable.h"
#include "tools/collector/Users.h"

namespace qel::collector {

/// Checks the credentials of requests. A thread of its own checks hashed secrets. Thread-safe,
/// except the destructor.
class LogIn {
 public:
  explicit LogIn(std::shared_ptr<Users> allowed) : users(std::move(allowed)) {}

  /// Checks the value of an Authorization header. Returns `std::nullopt` if too many checks wait,
  /// in all or of this address.
  boost::asio::awaitable<std::optional<Users::Identity>> check(std::string authorization,
                                                               std::string address);

  /// Waits for the checks in progress.
  void stop() { checker_.join(); }

  Replaceable<std::shared_ptr<Users>> users;

 private:
  HashChecks checks_;
  boost::asio::thread_pool checker_{1};
};

}  // namespace qel::collector
