#include "host/QelUtilities/Patience.h"

#include <algorithm>

namespace qel::utilities {
namespace {

/// The innermost object of this thread; null if there is none. Trivially destroyed, so it can be
/// read until the thread ends.
constinit thread_local Patience* innermost = nullptr;

}  // namespace

Patience::Patience(Duration limit, const StopTime* stopTime)
    : outer_(innermost),
      stopTime_(stopTime == nullptr && outer_ != nullptr ? outer_->stopTime_ : stopTime),
      left_(outer_ == nullptr ? limit : std::min(limit, outer_->left_)),
      hasGivenUp_(hasGivenUp()) {
  innermost = this;
}

Patience::Patience(Duration limit) : Patience(limit, nullptr) {}

Patience::Patience(Duration limit, const StopTime& stopTime) : Patience(limit, &stopTime) {}

Patience::Patience() : Patience(innermost == nullptr ? ofHost : unlimited) {}

Patience::~Patience() { innermost = outer_; }

Patience::Duration Patience::left() {
  return innermost == nullptr || mustStop() ? Duration::zero() : innermost->left_;
}

bool Patience::mustStop() {
  const auto* const stopTime = innermost == nullptr ? nullptr : innermost->stopTime_;
  return stopTime != nullptr && std::chrono::steady_clock::now() >= stopTime->load();
}

void Patience::spend(Duration waited) {
  for (auto* patience = innermost; patience != nullptr; patience = patience->outer_) {
    if (patience->left_ != unlimited) {
      patience->left_ -= std::min(waited, patience->left_);
    }
  }
}

void Patience::giveUp() {
  for (auto* patience = innermost; patience != nullptr; patience = patience->outer_) {
    patience->hasGivenUp_ = patience->left_ == Duration::zero();
  }
}

bool Patience::hasGivenUp() { return innermost != nullptr && innermost->hasGivenUp_; }

}  // namespace qel::utilities
