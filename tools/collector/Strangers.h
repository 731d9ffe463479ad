#pragma once

#include <cstddef>
#include <map>

#include <boost/asio/ip/address.hpp>

namespace qel::collector {

/// Counts the connections that have not logged in. One address can hold only a part of the places,
/// so that it keeps nobody else out. Addresses count as `countedAddress` says.
///
/// **Threads.** Used by one thread.
class Strangers {
 public:
  using Address = boost::asio::ip::address;

  static constexpr std::size_t most = 64;
  static constexpr std::size_t mostOfAddress = 32;

  /// Whether the limits permit another connection of this address.
  bool hasPlaceFor(const Address& address) const;

  void add(const Address& address);
  void remove(const Address& address);

 private:
  std::size_t all_ = 0;
  std::map<Address, std::size_t> byAddress_;  ///< without zeros
};

}  // namespace qel::collector
