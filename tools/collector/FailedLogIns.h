#pragma once

#include <chrono>
#include <cstddef>
#include <map>

#include <boost/asio/ip/address.hpp>

#include "tools/collector/Allowance.h"

namespace qel::collector {

/// What counts as one address: a network of IPv6 (/64), and an IPv4 address, also inside IPv6.
boost::asio::ip::address countedAddress(const boost::asio::ip::address& given);

/// Limits the failed log-ins of each address to ten a minute, so that secrets cannot be guessed.
/// Addresses count as `countedAddress` says.
///
/// **Memory.** Remembers at most `most` addresses. If there are more, it forgets the one with the
/// fewest recent failures.
///
/// **Threads.** Used by one thread.
class FailedLogIns {
 public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::size_t most = 4096;

  /// How long the address must wait for its next log-in; zero if it need not.
  std::chrono::seconds delay(const boost::asio::ip::address& address, Time now) const;

  /// Counts a failed log-in.
  void add(const boost::asio::ip::address& address, Time now);

 private:
  void forgetOne(Time now);

  std::map<boost::asio::ip::address, Allowance> failures_;
};

}  // namespace qel::collector
