#include "tools/support/Following.h"

#include <chrono>
#include <iostream>

#include "host/QelUtilities/Exception.h"
#include "tools/common/DelayedInterruption.h"
#include "tools/records/Recordings.h"

namespace qel::support {

void Following::run(const std::function<void(const std::vector<records::Event>&)>& show) {
  constexpr std::chrono::milliseconds pause(500);
  const tools::DelayedInterruption untilShown;
  while (!tools::DelayedInterruption::comesWithin(pause)) {
    const auto events = read();
    if (!events.empty()) {
      show(events);
    }
  }
}

std::vector<records::Event> Following::read() {
  try {
    records::Recordings recordings(file_);
    auto events = reader_.next(*recordings.files.front());
    lastFailure_.clear();
    return events;
  } catch (const qel::exception& failure) {
    if (lastFailure_ != failure.what()) {
      lastFailure_ = failure.what();
      std::cerr << "qel-support: warning: " + lastFailure_ + '\n';
    }
    return {};
  }
}

}  // namespace qel::support
