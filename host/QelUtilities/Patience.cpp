#include "host/QelUtilities/Patience.h"

#include <algorithm>

namespace qel::utilities {
namespace {

/// The outermost object of this thread. Trivially destroyed, so readable to the thread's end.
constinit thread_local Patience* outermost = nullptr;

}  // namespace

Patience::Patience(Duration limit) : left_(limit) {
  if (outermost == nullptr) {
    outermost = this;
  }
}

Patience::~Patience() {
  if (outermost == this) {
    outermost = nullptr;
  }
}

Patience::Duration Patience::left() {
  return outermost == nullptr ? Duration::zero() : outermost->left_;
}

void Patience::spend(Duration waited) {
  if (outermost != nullptr && outermost->left_ != unlimited) {
    outermost->left_ -= std::min(waited, outermost->left_);
  }
}

}  // namespace qel::utilities
