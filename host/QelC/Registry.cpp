#include "host/QelC/Registry.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "host/QelC/CallError.h"
#include "host/QelC/Environment.h"
#include "host/QelLog/LogManager.h"
#include "host/QelSql/DirectoryClaim.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/ProcessEnd.h"
#include "host/QelUtilities/ScopeGuard.h"

namespace qel::c {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using utilities::MutexLock;

/// Unlikely to be a value that is no handle, such as a small number or an address.
constexpr qel_analytics_handle noHandleYet = 0x51454C43'00000000;
/// Longer than any broadcast takes unless its thread has crashed or hangs in a callback.
constexpr std::chrono::seconds longestBroadcast{2};

void expectNoCallback() {
  if (Callbacks::isRunningOnThisThread()) {
    throw CallError(QEL_ANALYTICS_IN_CALLBACK, "a callback must not call this function");
  }
}

/// Passes the last messages to the host, then detaches the log from it. If memory is exhausted, the
/// log stays attached, but closed callbacks receive nothing.
void endLog(steady_clock::time_point deadline) noexcept try {
  const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
  auto& log = log::LogManager::instance();
  if (log.flush(std::max(0ms, left))) {
    log.configure({.standardError = false, .file = {}});
  }
} catch (const std::exception&) {
  return;
}

/// The exception of the function, or null.
template <typename Function>
std::exception_ptr failureOf(const Function& function) noexcept {
  try {
    function();
    return nullptr;
  } catch (...) {
    return std::current_exception();
  }
}

}  // namespace

Registry& Registry::instance() {
  static auto* const registry = new Registry;
  return *registry;
}

Registry::Registry() : handle_(noHandleYet) {
  utilities::keepLoaded([] {});  // for workers of a client that is not released
}

qel_analytics_handle Registry::create(Parameters parameters) {
  expectNoCallback();
  const MutexLock control(control_);
  if (session_) {
    throw CallError(QEL_ANALYTICS_ALREADY_CREATED, "this process already has a client");
  }
  const auto environment = parameters.callbacks->environment();
  readEnvironment(environment);
  session_ = open(parameters, environment);
  const MutexLock lock(mutex_);
  live_ = session_.get();
  return ++handle_;
}

void Registry::end(qel_analytics_handle handle, Ending ending) {
  expectNoCallback();
  const auto deadline = beginEnd(handle, ending);
  const MutexLock control(control_);
  const ScopeGuard removeExitDeadline([] { utilities::setExitDeadline(std::nullopt); });
  waitForBroadcast(deadline);
  destroySession(ending, deadline);
}

void Registry::use(qel_analytics_handle handle, const std::function<void(Session&)>& function) {
  expectNoCallback();
  const MutexLock control(control_);
  {
    const MutexLock lock(mutex_);
    expectLive(handle);
  }
  function(*session_);
}

void Registry::broadcast(qel_analytics_handle handle, const notification::Broadcast& broadcast) {
  const Session* session = nullptr;
  {
    MutexLock lock(mutex_);
    expectLive(handle);
    // Also keeps a callback that runs during the broadcast which ends storage from waiting for it.
    live_->expectStorage();
    const auto isFree = [this]() QEL_REQUIRES(mutex_) { return !isBroadcasting_; };
    if (!broadcastEnded_.waitUntil(lock, steady_clock::now() + longestBroadcast, isFree)) {
      throw CallError(QEL_ANALYTICS_BUSY, "another thread has not completed its notification");
    }
    expectLive(handle);
    isBroadcasting_ = true;
    session = live_;
  }
  const ScopeGuard endBroadcast([this] {
    const MutexLock lock(mutex_);
    isBroadcasting_ = false;
    broadcastEnded_.notifyAll();
  });
  broadcast();
  session->expectStorage();  // the session exists until the broadcast ends
}

/// A directory that cannot be used must not determine the identity of the process. So the directory
/// is claimed before.
std::unique_ptr<Session> Registry::open(Parameters& parameters, const std::string& environment) {
  try {
    log::LogManager::instance().configure(parameters.log);
    const db::sql::DirectoryClaim claim(utilities::pathFromUtf8(parameters.directory));
    identify(parameters);
    return std::make_unique<Session>(parameters, environment);
  } catch (...) {
    const auto deadline = steady_clock::now() + parameters.releaseLimit;
    endLog(deadline);
    parameters.callbacks->close(deadline);
    throw;
  }
}

/// Gives the client the identity of this process, or the process the identity of its first client.
void Registry::identify(Parameters& parameters) {
  if (!identity_) {
    if (parameters.sessionId.isNull()) {
      parameters.sessionId = Guid::create();
    }
    identity_ = {parameters.installationId, parameters.sessionId};
    return;
  }
  if (parameters.sessionId.isNull()) {
    parameters.sessionId = identity_->sessionId;
  }
  if (parameters.installationId != identity_->installationId ||
      parameters.sessionId != identity_->sessionId) {
    throw CallError(
        QEL_ANALYTICS_INVALID_ARGUMENT,
        "installation_id or session_id differs from that of the process's first client");
  }
}

void Registry::expectLive(qel_analytics_handle handle) const {
  if (handle == handle_ && live_ != nullptr) {
    return;
  }
  const char* reason = "the handle does not come from qel_analytics_create";
  if (handle == 0) {
    reason = "the handle is null";
  } else if (handle > noHandleYet && handle <= handle_) {
    reason = "the client of this handle was released";
  }
  throw CallError(QEL_ANALYTICS_INVALID_HANDLE, reason);
}

/// From now on the handle is invalid. Most of the limit is for the client, and the rest for its
/// last log messages and the callbacks that run. Returns the time of the limit. A removal ends
/// sending here, because other threads may keep it waiting.
Registry::TimePoint Registry::beginEnd(qel_analytics_handle handle, Ending ending) {
  const MutexLock lock(mutex_);
  expectLive(handle);
  if (ending == Ending::Remove) {
    live_->endSending();
  }
  const auto limit = live_->releaseLimit();
  live_ = nullptr;
  utilities::setExitDeadline(limit * 4 / 5);
  return steady_clock::now() + limit;
}

void Registry::waitForBroadcast(TimePoint deadline) {
  MutexLock lock(mutex_);
  const auto isFree = [this]() QEL_REQUIRES(mutex_) { return !isBroadcasting_; };
  if (!broadcastEnded_.waitUntil(lock, deadline, isFree)) {
    live_ = session_.get();
    throw CallError(QEL_ANALYTICS_BUSY, "another thread has not completed its notification");
  }
}

/// Completes all steps, even if one fails. A callback that has not returned hides another failure,
/// because the host must know that the callback still uses the context.
void Registry::destroySession(Ending ending, TimePoint deadline) {
  const auto callbacks = session_->callbacks();
  std::exception_ptr failure;
  if (ending == Ending::Send) {
    failure = failureOf([&session = *session_] { session.waitUntilStored(); });
  }
  // Otherwise rows that the client adds while it is destroyed would be stored after the last
  // sending pass.
  callbacks->denyEverything();
  if (ending == Ending::Remove) {
    failure = failureOf([&session = *session_] { session.withdraw(); });
  }
  session_.reset();
  endLog(deadline);
  if (!callbacks->close(deadline)) {
    throw CallError(QEL_ANALYTICS_CALLBACK_RUNNING, "the client has ended, but a callback runs");
  }
  if (failure) {
    std::rethrow_exception(failure);
  }
}

}  // namespace qel::c
