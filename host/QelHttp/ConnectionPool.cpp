#include "host/QelHttp/ConnectionPool.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

#include "host/QelHttp/SettingsInForce.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "host/QelUtilities/ProcessEnd.h"
#include "host/QelUtilities/ScopeGuard.h"

namespace qel::protocol::https {

ConnectionPool& ConnectionPool::instance() {
  // Never destroyed, because worker threads may still post while the process exits.
  static auto* const pool = new ConnectionPool;
  return *pool;
}

ConnectionPool::ConnectionPool() {
  // The first connection makes the TLS library register its own exit handler. An exit handler that
  // is registered later runs earlier, so `endAll` runs first.
  idle_.push_back(std::make_unique<Connection>(settingsInForce()));
  utilities::beforeExit([] { instance().endAll(); });
}

Outcome ConnectionPool::exchange(const Message& message,
                                 const std::shared_ptr<const Settings>& settings) {
  if (!enter()) {
    return {0, false, "the process exits"};
  }
  const ScopeGuard leaving([this] { leave(); });
  auto connection = take(settings);
  Outcome outcome = connection->exchange(message);
  keep(std::move(connection));
  return outcome;
}

bool ConnectionPool::enter() {
  const utilities::MutexLock lock(mutex_);
  if (ended_) {
    return false;
  }
  ++inFlight_;
  return true;
}

void ConnectionPool::leave() {
  Connection::leaveThread();
  const utilities::MutexLock lock(mutex_);
  --inFlight_;
  left_.notifyAll();
}

void ConnectionPool::endAll() {
  // Long enough for exchanges to notice the deadline. The wait is limited, because threads that the
  // system has already terminated never call `leave`.
  constexpr std::chrono::seconds longestWait{2};
  utilities::setExitDeadline(std::chrono::milliseconds::zero());
  utilities::MutexLock lock(mutex_);
  ended_ = true;
  left_.waitUntil(lock, std::chrono::steady_clock::now() + longestWait,
                  [this]() QEL_REQUIRES(mutex_) { return inFlight_ == 0; });
}

std::unique_ptr<Connection> ConnectionPool::take(const std::shared_ptr<const Settings>& settings) {
  std::vector<std::unique_ptr<Connection>> outdated;  // closed after the mutex is released
  {
    const utilities::MutexLock lock(mutex_);
    const auto current = std::partition(idle_.begin(), idle_.end(), [&](const auto& connection) {
      return connection->settings() != settings;
    });
    outdated.assign(std::make_move_iterator(idle_.begin()), std::make_move_iterator(current));
    idle_.erase(idle_.begin(), current);
    if (!idle_.empty()) {
      auto connection = std::move(idle_.back());
      idle_.pop_back();
      return connection;
    }
  }
  return std::make_unique<Connection>(settings);
}

void ConnectionPool::keep(std::unique_ptr<Connection> connection) {
  constexpr std::size_t mostIdle = 4;
  const utilities::MutexLock lock(mutex_);
  if (idle_.size() < mostIdle) {
    idle_.push_back(std::move(connection));
  }
}

}  // namespace qel::protocol::https
