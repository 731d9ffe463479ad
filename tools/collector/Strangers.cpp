#include "tools/collector/Strangers.h"

#include "tools/collector/FailedLogIns.h"

namespace qel::collector {

bool Strangers::hasPlaceFor(const Address& address) const {
  const auto found = byAddress_.find(countedAddress(address));
  return all_ < most && (found == byAddress_.end() || found->second < mostOfAddress);
}

void Strangers::add(const Address& address) {
  ++all_;
  ++byAddress_[countedAddress(address)];
}

void Strangers::remove(const Address& address) {
  --all_;
  const auto found = byAddress_.find(countedAddress(address));
  if (--found->second == 0) {
    byAddress_.erase(found);
  }
}

}  // namespace qel::collector
