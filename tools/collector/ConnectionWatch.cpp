#include "tools/collector/ConnectionWatch.h"

#include <algorithm>
#include <array>

#include <netdb.h>
#include <openssl/err.h>
#include <sys/socket.h>

#include "host/QelLog/LogManager.h"

namespace qel::collector {
namespace {

void logWarning(const std::string& message) {
  log::LogManager::instance().getLogger("qel.collector")->log(log::Level::Warning, message);
}

std::string peerOf(int socket) {
  sockaddr_storage address{};
  socklen_t size = sizeof(address);
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  std::array<char, NI_MAXHOST> host{};
  std::array<char, NI_MAXSERV> port{};
  if (::getpeername(socket, generic, &size) != 0 ||
      ::getnameinfo(generic, size, host.data(), host.size(), port.data(), port.size(),
                    NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
    return "a peer that is gone";
  }
  const std::string name = host.data();
  return (address.ss_family == AF_INET6 ? '[' + name + ']' : name) + ':' + port.data();
}

/// Why the handshake of this thread's connection failed.
std::string handshakeFailure() {
  const auto first = ERR_peek_error();
  // This is said of every end that comes before the handshake's.
  if (first == 0 || ERR_GET_REASON(first) == SSL_R_SHUTDOWN_WHILE_IN_INIT) {
    return "it broke off";
  }
  const char* const reason = ERR_reason_error_string(first);
  return reason != nullptr ? reason : "system error";
}

}  // namespace

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
  auto* const connection = static_cast<Connection*>(SSL_get_ex_data(ssl, connectionIndex()));
  if ((where & SSL_CB_HANDSHAKE_START) != 0 && connection == nullptr) {
    auto* const watch = static_cast<ConnectionWatch*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(ssl)));
    // The library hands its own object out as constant here, only to guard against misuse.
    watch->add(const_cast<SSL*>(ssl));
  } else if ((where & SSL_CB_HANDSHAKE_DONE) != 0 && connection != nullptr) {
    const std::lock_guard lock(connection->watch->mutex_);
    connection->encrypted = true;
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
  connection->watch->count(*connection, length);
}

void ConnectionWatch::onFree(void* /*parent*/, void* connection, CRYPTO_EX_DATA* /*data*/,
                             int /*index*/, long /*number*/, void* /*argument*/) {
  if (connection == nullptr) {
    return;
  }
  const auto& ended = *static_cast<Connection*>(connection);
  auto* const watch = ended.watch;
  const std::lock_guard lock(watch->mutex_);
  if (!ended.encrypted && ended.phase != Phase::Cut) {
    logWarning("no TLS connection: " + handshakeFailure() + ", from " + ended.peer);
  }
  watch->connections_.remove_if([&](const Connection& each) { return &each == &ended; });
}

/// Wakes whoever reads from the socket or writes to it; the socket stays theirs to close.
void ConnectionWatch::cut(Connection& connection, const std::string& reason) {
  ::shutdown(connection.socket, SHUT_RDWR);
  connection.phase = Phase::Cut;
  logWarning("cut: " + reason + ", from " + connection.peer);
}

ConnectionWatch::Connection& ConnectionWatch::find(const SSL* ssl) {
  return *static_cast<Connection*>(SSL_get_ex_data(ssl, connectionIndex()));
}

void ConnectionWatch::add(SSL* ssl) {
  const std::lock_guard lock(mutex_);
  Connection& connection = connections_.emplace_back();
  connection.watch = this;
  connection.ssl = ssl;
  connection.socket = SSL_get_fd(ssl);
  connection.worker = std::this_thread::get_id();
  connection.peer = peerOf(connection.socket);
  SSL_set_ex_data(ssl, connectionIndex(), &connection);
  beginHead(connection);
  if (connections_.size() >= limits_.connections) {
    wake_.notify_one();
  }
}

void ConnectionWatch::beginHead(Connection& connection) {
  const auto now = Clock::now();
  connection.phase = Phase::Head;
  connection.headBytes = 0;
  connection.deadline = now + limits_.headTime;
  connection.patienceEnd = now + limits_.patience;
  if (stopped_) {
    cut(connection, "the server stops");
  }
}

void ConnectionWatch::count(Connection& connection, std::size_t bytes) const {
  if (connection.phase == Phase::BodyOfKnown) {
    connection.patienceEnd += std::chrono::microseconds(bytes * 1'000'000 / limits_.slowestBody);
  } else if (connection.phase == Phase::Head) {
    connection.headBytes += bytes;
    if (connection.headBytes > limits_.headBytes) {
      cut(connection, "the request's head is too large");
    }
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
  connection.patienceEnd = Clock::now() + limits_.patience;
}

void ConnectionWatch::awaitAnswer(const SSL* ssl) {
  const std::lock_guard lock(mutex_);
  Connection& connection = find(ssl);
  connection.phase = Phase::Answer;
  connection.deadline = Clock::time_point::max();
}

void ConnectionWatch::awaitHead(const SSL* ssl) {
  const std::lock_guard lock(mutex_);
  beginHead(find(ssl));
}

ConnectionWatch::Connection& ConnectionWatch::findOfThisWorker() {
  return *std::find_if(connections_.begin(), connections_.end(), [](const Connection& connection) {
    return connection.worker == std::this_thread::get_id();
  });
}

std::string ConnectionWatch::peerOfThisWorker() {
  const std::lock_guard lock(mutex_);
  return findOfThisWorker().peer;
}

void ConnectionWatch::endConnectionOfThisWorker() {
  const std::lock_guard lock(mutex_);
  const Connection& connection = findOfThisWorker();
  // The first is for what was decrypted already, the second for what waits in the socket.
  SSL_set_shutdown(connection.ssl, SSL_RECEIVED_SHUTDOWN);
  ::shutdown(connection.socket, SHUT_RD);
}

void ConnectionWatch::stop() {
  const std::lock_guard lock(mutex_);
  stopped_ = true;
  for (Connection& connection : connections_) {
    if (connection.phase == Phase::BodyOfKnown || connection.phase == Phase::Answer) {
      connection.deadline = std::min(connection.deadline, Clock::now() + limits_.lastBodyTime);
    } else if (connection.phase != Phase::Cut) {
      cut(connection, "the server stops");
    }
  }
  wake_.notify_all();
}

/// Returns when the next deadline ends.
ConnectionWatch::Clock::time_point ConnectionWatch::cutLate(Clock::time_point now) {
  // No deadline that is set meanwhile comes earlier, unless `stop` sets it.
  auto next = now + limits_.headTime;
  for (Connection& connection : connections_) {
    if (connection.phase == Phase::Cut) {
      continue;
    }
    if (connection.deadline <= now) {
      cut(connection, "its time is over");
    } else {
      next = std::min(next, connection.deadline);
    }
  }
  return next;
}

/// Returns when the next can make room; the clock's end while there is room.
ConnectionWatch::Clock::time_point ConnectionWatch::makeRoom(Clock::time_point now) {
  std::size_t taken = 0;
  Connection* first = nullptr;
  for (Connection& connection : connections_) {
    taken += connection.phase == Phase::Cut ? 0 : 1;
    if (connection.phase != Phase::Cut && connection.phase != Phase::Answer &&
        (first == nullptr || connection.patienceEnd < first->patienceEnd)) {
      first = &connection;
    }
  }
  if (taken < limits_.connections) {
    return Clock::time_point::max();
  }
  if (first == nullptr || first->patienceEnd > now) {
    return first == nullptr ? now + limits_.patience : first->patienceEnd;
  }
  cut(*first, "makes room for others");
  return Clock::time_point::max();
}

void ConnectionWatch::keepTime() {
  std::unique_lock lock(mutex_);
  while (!ended_) {
    const auto now = Clock::now();
    const auto nextDeadline = cutLate(now);
    const auto nextRoom = makeRoom(now);
    wake_.wait_until(lock, std::min(nextDeadline, nextRoom));
  }
}

}  // namespace qel::collector
