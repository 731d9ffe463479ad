#include "tools/collector/ConnectionWatch.h"

#include <algorithm>
#include <utility>

#include <sys/socket.h>

namespace qel::collector {

/// The callbacks for the TLS library.
struct ConnectionWatch::Callbacks {
  /// The index under which a connection of the TLS library stores the address of its
  /// `WatchedConnection`.
  static int index() {
    static const int number = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, onFree);
    return number;
  }

  static WatchedConnection* find(const SSL* ssl) {
    return static_cast<WatchedConnection*>(SSL_get_ex_data(ssl, index()));
  }

  static void onProgress(const SSL* ssl, int where, int /*result*/) {
    auto* const connection = find(ssl);
    if ((where & SSL_CB_HANDSHAKE_START) != 0 && connection == nullptr) {
      auto* const watch = static_cast<ConnectionWatch*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(ssl)));
      // The object is not const. The TLS library passes it as const only to prevent misuse.
      watch->add(const_cast<SSL*>(ssl));
    } else if ((where & SSL_CB_HANDSHAKE_DONE) != 0 && connection != nullptr) {
      connection->watch.noteEncryption(*connection);
    }
  }

  static void onRecord(int outgoing, int /*version*/, int type, const void* data,
                       std::size_t /*size*/, SSL* ssl, void* /*argument*/) {
    auto* const connection = find(ssl);
    if (outgoing != 0 || type != SSL3_RT_HEADER || connection == nullptr) {
      return;
    }
    const auto* const header = static_cast<const unsigned char*>(data);
    const std::size_t length = static_cast<std::size_t>(header[3]) << 8U | header[4];
    connection->watch.count(*connection, length);
  }

  static void onFree(void* /*parent*/, void* connection, CRYPTO_EX_DATA* /*data*/, int /*index*/,
                     long /*number*/, void* /*argument*/) {
    if (connection != nullptr) {
      const auto& ended = *static_cast<WatchedConnection*>(connection);
      ended.watch.remove(ended);
    }
  }
};

ConnectionWatch::ConnectionWatch(const ConnectionLimits& limits)
    : connections_(limits), timekeeper_([this] { keepTime(); }) {}

ConnectionWatch::~ConnectionWatch() {
  {
    const utilities::MutexLock lock(mutex_);
    ended_ = true;
    wakeTimekeeper();
  }
  timekeeper_.join();
}

void ConnectionWatch::attachTo(SSL_CTX& context) {
  SSL_CTX_set_app_data(&context, this);
  SSL_CTX_set_info_callback(&context, Callbacks::onProgress);
  SSL_CTX_set_msg_callback(&context, Callbacks::onRecord);
}

void ConnectionWatch::add(SSL* ssl) {
  const utilities::MutexLock lock(mutex_);
  SSL_set_ex_data(ssl, Callbacks::index(), &connections_.add(*this, ssl));
  if (connections_.isFull()) {
    wakeTimekeeper();
  }
}

void ConnectionWatch::noteEncryption(WatchedConnection& connection) {
  const utilities::MutexLock lock(mutex_);
  connection.encrypted = true;
}

void ConnectionWatch::count(WatchedConnection& connection, std::size_t bytes) {
  const utilities::MutexLock lock(mutex_);
  connections_.count(connection, bytes);
}

void ConnectionWatch::remove(const WatchedConnection& connection) {
  const utilities::MutexLock lock(mutex_);
  connections_.remove(connection);
}

void ConnectionWatch::admitBody(const SSL* ssl, Sender sender) {
  const utilities::MutexLock lock(mutex_);
  connections_.beginBody(*Callbacks::find(ssl), sender);
}

void ConnectionWatch::awaitAnswer(const SSL* ssl) {
  const utilities::MutexLock lock(mutex_);
  WatchedConnections::beginAnswer(*Callbacks::find(ssl));
}

void ConnectionWatch::awaitHead(const SSL* ssl) {
  const utilities::MutexLock lock(mutex_);
  connections_.beginHead(*Callbacks::find(ssl));
}

std::string ConnectionWatch::peerOfThisWorker() {
  const utilities::MutexLock lock(mutex_);
  return connections_.ofThisWorker().peer;
}

void ConnectionWatch::endConnectionOfThisWorker() {
  const utilities::MutexLock lock(mutex_);
  const WatchedConnection& connection = connections_.ofThisWorker();
  // The first call stops the reading of decrypted bytes. The second call stops the reading of bytes
  // that are pending in the socket.
  SSL_set_shutdown(connection.ssl, SSL_RECEIVED_SHUTDOWN);
  ::shutdown(connection.socket, SHUT_RD);
}

void ConnectionWatch::stop() {
  const utilities::MutexLock lock(mutex_);
  connections_.stop();
  wakeTimekeeper();
}

void ConnectionWatch::wakeTimekeeper() {
  woken_ = true;
  wake_.notifyOne();
}

void ConnectionWatch::keepTime() {
  utilities::MutexLock lock(mutex_);
  while (!ended_) {
    const auto now = WatchedConnections::Clock::now();
    const auto nextDeadline = connections_.cutLate(now);
    const auto nextRoom = connections_.makeRoom(now);
    wake_.waitUntil(lock, std::min(nextDeadline, nextRoom),
                    [this]() QEL_REQUIRES(mutex_) { return std::exchange(woken_, false); });
  }
}

}  // namespace qel::collector
