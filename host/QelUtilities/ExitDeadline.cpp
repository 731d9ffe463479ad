#include "host/QelUtilities/ExitDeadline.h"

#include <algorithm>
#include <atomic>

namespace qel::utilities {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr auto unarmed = steady_clock::time_point::max();

// Trivially destroyed, because worker threads may still read it while the process exits.
constinit std::atomic<steady_clock::time_point> deadline{unarmed};

}  // namespace

void setExitDeadline(std::optional<milliseconds> fromNow) {
  auto end = unarmed;
  const auto now = steady_clock::now();
  if (fromNow && *fromNow < std::chrono::floor<milliseconds>(end - now)) {
    end = now + std::max(*fromNow, milliseconds::zero());
  }
  deadline = end;
}

steady_clock::time_point exitDeadline() { return deadline; }

void DefaultExitDeadline::arm(milliseconds fromNow) {
  auto expected = unarmed;
  const auto end = steady_clock::now() + fromNow;
  if (deadline.compare_exchange_strong(expected, end)) {
    armed_ = end;
  }
}

DefaultExitDeadline::~DefaultExitDeadline() {
  deadline.compare_exchange_strong(armed_, unarmed);  // changes nothing if `arm` set no deadline
}

}  // namespace qel::utilities
