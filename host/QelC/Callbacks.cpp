#include "host/QelC/Callbacks.h"

#include "host/QelUtilities/ScopeGuard.h"

namespace qel::c {
namespace {

/// How many functions of the host the thread is running, one inside the other.
constinit thread_local int depth = 0;

}  // namespace

Callbacks::Callbacks(const qel_analytics_parameters& parameters)
    : context_(parameters.context),
      isSendingAllowed_(parameters.is_sending_allowed),
      isSupportAllowed_(parameters.is_support_allowed),
      log_(parameters.log),
      environment_(parameters.environment) {}

bool Callbacks::isSendingAllowed() { return isAllowed(isSendingAllowed_); }

bool Callbacks::isSupportAllowed() { return isAllowed(isSupportAllowed_); }

void Callbacks::log(int level, const std::string& logger, const std::string& message) {
  if (log_ != nullptr) {
    callOr(false, [&] {
      log_(context_, level + QEL_ANALYTICS_LOG_DEBUG, logger.c_str(), message.c_str());
      return true;
    });
  }
}

std::string Callbacks::environment() {
  if (environment_ == nullptr) {
    return {};
  }
  return callOr(std::string(), [&] {
    const char* const text = environment_(context_);
    return text == nullptr ? std::string() : std::string(text);
  });
}

void Callbacks::denyEverything() {
  const utilities::MutexLock lock(mutex_);
  isDenying_ = true;
}

bool Callbacks::close(std::chrono::steady_clock::time_point deadline) {
  utilities::MutexLock lock(mutex_);
  isClosed_ = true;
  return left_.waitUntil(lock, deadline, [this]() QEL_REQUIRES(mutex_) { return running_ == 0; });
}

bool Callbacks::isRunningOnThisThread() { return depth > 0; }

/// The result of a function of the host, or `fallback` if it throws or must not be called.
template <typename Result, typename Call>
Result Callbacks::callOr(Result fallback, Call call) {
  if (!enter()) {
    return fallback;
  }
  const ScopeGuard guard([this] { leave(); });
  try {
    return call();
  } catch (...) {
    return fallback;
  }
}

bool Callbacks::enter() {
  const utilities::MutexLock lock(mutex_);
  if (isClosed_) {
    return false;
  }
  ++running_;
  ++depth;
  return true;
}

void Callbacks::leave() {
  const utilities::MutexLock lock(mutex_);
  --running_;
  --depth;
  left_.notifyAll();
}

bool Callbacks::isAllowed(qel_analytics_permission permission) {
  if (permission == nullptr) {
    return false;
  }
  {
    const utilities::MutexLock lock(mutex_);
    if (isDenying_) {
      return false;
    }
  }
  return callOr(false, [&] { return permission(context_) != 0; });
}

}  // namespace qel::c
