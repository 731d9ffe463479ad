#include "tools/collector/ConnectionWatch.h"

#include <algorithm>

#include <sys/socket.h>

namespace qel::collector {

ConnectionWatch::ConnectionWatch(const Limits& limits)
    : limits_(limits), timekeeper_([this] { keepTime(); }) {}

ConnectionWatch::~ConnectionWatch() {
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
  }
  wake_.notify_one();
  timekeeper_.join();
}

int ConnectionWatch::connectionIndex() {
  static const int index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, onFree);
  return index;
}

void ConnectionWatch::attachTo(SSL_CTX& context) {
  SSL_CTX_set_app_data(&context, this);
  SSL_CTX_set_info_callback(&context, onProgress);
  SSL_CTX_set_msg_callback(&context, onRecord);
}

void ConnectionWatch::onProgress(const SSL* ssl, int where, int /*result*/) {
  if ((where & SSL_CB_HANDSHAKE_START) != 0 && SSL_get_ex_data(ssl, connectionIndex()) == nullptr) {
    auto* const watch = static_cast<ConnectionWatch*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(ssl)));
    // The library hands its own object out as constant here, only to guard against misuse.
    watch->add(const_cast<SSL*>(ssl));
  }
}

void ConnectionWatch::onRecord(int outgoing, int /*version*/, int type, const void* data,
                               std::size_t /*size*/, SSL* ssl, void* /*argument*/) {
  auto* const connection = static_cast<Connection*>(SSL_get_ex_data(ssl, connectionIndex()));
  if (outgoing != 0 || type != SSL3_RT_HEADER || connection == nullptr) {
    return;
  }
  const auto* const header = static_cast<const unsigned char*>(data);
  const std::size_t length = static_cast<std::size_t>(header[3]) << 8U | header[4];
  const std::lock_guard lock(connection->watch->mutex_);
  if (connection->phase != Phase::Head) {
    return;
  }
  connection->headBytes += length;
  if (connection->headBytes > connection->watch->limits_.headBytes) {
    cut(*connection);
  }
}

void ConnectionWatch::onFree(void* /*parent*/, void* connection, CRYPTO_EX_DATA* /*data*/,
                             int /*index*/, long /*number*/, void* /*argument*/) {
  if (connection == nullptr) {
    return;
  }
  auto* const watch = static_cast<Connection*>(connection)->watch;
  const std::lock_guard lock(watch->mutex_);
  watch->connections_.remove_if([&](const Connection& each) { return &each == connection; });
}

/// Wakes whoever reads from the socket or writes to it; the socket stays theirs to close.
void ConnectionWatch::cut(Connection& connection) {
  ::shutdown(connection.socket, SHUT_RDWR);
  connection.deadline = Clock::time_point::max();
}

ConnectionWatch::Connection& ConnectionWatch::find(const SSL* ssl) {
  return *static_cast<Connection*>(SSL_get_ex_data(ssl, connectionIndex()));
}

void ConnectionWatch::add(SSL* ssl) {
  const std::lock_guard lock(mutex_);
  Connection& connection = connections_.emplace_back();
  connection.watch = this;
  connection.socket = SSL_get_fd(ssl);
  SSL_set_ex_data(ssl, connectionIndex(), &connection);
  beginHead(connection);
  if (connections_.size() >= limits_.connections) {
    makeRoom();
  }
}

void ConnectionWatch::beginHead(Connection& connection) {
  connection.phase = Phase::Head;
  connection.headBytes = 0;
  connection.deadline = Clock::now() + limits_.headTime;
  if (stopped_) {
    cut(connection);
  }
}

void ConnectionWatch::makeRoom() {
  Connection* oldest = nullptr;
  for (Connection& connection : connections_) {
    if (connection.phase != Phase::BodyOfKnown &&
        (oldest == nullptr || connection.deadline < oldest->deadline)) {
      oldest = &connection;
    }
  }
  if (oldest != nullptr) {
    cut(*oldest);
  }
}

void ConnectionWatch::admitBody(const SSL* ssl, Sender sender) {
  const std::lock_guard lock(mutex_);
  Connection& connection = find(ssl);
  if (sender == Sender::Unknown) {
    connection.phase = Phase::BodyOfUnknown;
    return;
  }
  connection.phase = Phase::BodyOfKnown;
  connection.deadline = Clock::now() + limits_.bodyTime;
}

void ConnectionWatch::awaitHead(const SSL* ssl) {
  const std::lock_guard lock(mutex_);
  beginHead(find(ssl));
}

void ConnectionWatch::stop() {
  const std::lock_guard lock(mutex_);
  stopped_ = true;
  for (Connection& connection : connections_) {
    if (connection.phase == Phase::BodyOfKnown) {
      connection.deadline = std::min(connection.deadline, Clock::now() + limits_.lastBodyTime);
    } else {
      cut(connection);
    }
  }
  wake_.notify_all();
}

void ConnectionWatch::keepTime() {
  std::unique_lock lock(mutex_);
  while (!ended_) {
    const auto now = Clock::now();
    // No deadline that is set while this waits comes earlier, unless `stop` sets it.
    auto next = now + limits_.headTime;
    for (Connection& connection : connections_) {
      if (connection.deadline <= now) {
        cut(connection);
      }
      next = std::min(next, connection.deadline);
    }
    wake_.wait_until(lock, next);
  }
}

}  // namespace qel::collector
