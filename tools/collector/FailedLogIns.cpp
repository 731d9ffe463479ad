#include "tools/collector/FailedLogIns.h"

#include <algorithm>

namespace qel::collector {
namespace {

using boost::asio::ip::address;

constexpr double secondsPerFailure = 6;
constexpr Allowance::Seconds burst{54.5};  // the tenth failure exceeds it

}  // namespace

address countedAddress(const address& given) {
  if (given.is_v4()) {
    return given;
  }
  if (given.to_v6().is_v4_mapped()) {
    return boost::asio::ip::make_address_v4(boost::asio::ip::v4_mapped, given.to_v6());
  }
  auto bytes = given.to_v6().to_bytes();
  std::fill(bytes.begin() + bytes.size() / 2, bytes.end(), 0);
  return boost::asio::ip::address_v6(bytes);
}

std::chrono::seconds FailedLogIns::delay(const address& address, Time now) const {
  const auto found = failures_.find(countedAddress(address));
  return found == failures_.end()
             ? std::chrono::seconds::zero()
             : std::chrono::ceil<std::chrono::seconds>(found->second.delay(now, burst));
}

void FailedLogIns::add(const address& address, Time now) {
  const auto key = countedAddress(address);
  if (failures_.size() == most && failures_.count(key) == 0) {
    forgetOne(now);
  }
  failures_[key].take(secondsPerFailure, 1, now);
}

void FailedLogIns::forgetOne(Time now) {
  failures_.erase(std::min_element(
      failures_.begin(), failures_.end(), [now](const auto& left, const auto& right) {
        constexpr Allowance::Seconds none{0};
        return left.second.delay(now, none) < right.second.delay(now, none);
      }));
}

}  // namespace qel::collector
