#include "host/QelUtilities/ExitDeadline.h"

#include <algorithm>
#include <atomic>

namespace qel::utilities {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Trivially destroyed: worker threads may still ask while the process exits.
constinit std::atomic<steady_clock::time_point> deadline{steady_clock::time_point::max()};

}  // namespace

void setExitDeadline(std::optional<milliseconds> fromNow) {
  auto end = steady_clock::time_point::max();
  const auto now = steady_clock::now();
  if (fromNow && *fromNow < std::chrono::floor<milliseconds>(end - now)) {
    end = now + std::max(*fromNow, milliseconds::zero());
  }
  deadline = end;
}

steady_clock::time_point exitDeadline() { return deadline; }

}  // namespace qel::utilities
