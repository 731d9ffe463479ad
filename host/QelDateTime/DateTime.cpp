#include "host/QelDateTime/DateTime.h"

#include <chrono>

namespace qel::datetime {

void DateTime::vSetNow() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  seconds_ = std::chrono::duration<double>(sinceEpoch).count();
}

}  // namespace qel::datetime
