#include "tools/collector/WatchedConnections.h"

#include <algorithm>
#include <array>

#include <netdb.h>
#include <openssl/err.h>
#include <sys/socket.h>

#include "host/QelLog/LogManager.h"

namespace qel::collector {
namespace {

using Phase = WatchedConnection::Phase;

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

/// The reason why the handshake failed on the calling thread.
std::string handshakeFailure() {
  const auto first = ERR_peek_error();
  // OpenSSL reports this whenever the connection ends before the handshake is complete.
  if (first == 0 || ERR_GET_REASON(first) == SSL_R_SHUTDOWN_WHILE_IN_INIT) {
    return "it broke off";
  }
  const char* const reason = ERR_reason_error_string(first);
  return reason != nullptr ? reason : "system error";
}

/// Shuts the socket down, which wakes the thread that reads from it or writes to it. That thread
/// closes the socket.
void cut(WatchedConnection& connection, const std::string& reason) {
  ::shutdown(connection.socket, SHUT_RDWR);
  connection.phase = Phase::Cut;
  logWarning("cut: " + reason + ", from " + connection.peer);
}

}  // namespace

WatchedConnection& WatchedConnections::add(ConnectionWatch& watch, SSL* ssl) {
  const int socket = SSL_get_fd(ssl);
  WatchedConnection& connection = connections_.emplace_back(
      WatchedConnection{watch, ssl, socket, std::this_thread::get_id(), peerOf(socket)});
  beginHead(connection);
  return connection;
}

void WatchedConnections::remove(const WatchedConnection& connection) {
  if (!connection.encrypted && connection.phase != Phase::Cut) {
    logWarning("no TLS connection: " + handshakeFailure() + ", from " + connection.peer);
  }
  connections_.remove_if([&](const WatchedConnection& each) { return &each == &connection; });
}

WatchedConnection& WatchedConnections::ofThisWorker() {
  return *std::find_if(connections_.begin(), connections_.end(), [](const auto& connection) {
    return connection.worker == std::this_thread::get_id();
  });
}

void WatchedConnections::beginHead(WatchedConnection& connection) {
  const auto now = Clock::now();
  connection.phase = Phase::Head;
  connection.headBytes = 0;
  connection.deadline = now + limits_.headTime;
  connection.patienceEnd = now + limits_.patience;
  if (stopped_) {
    cut(connection, "the server stops");
  }
}

void WatchedConnections::beginBody(WatchedConnection& connection, Sender sender) const {
  if (sender == Sender::Unknown) {
    connection.phase = Phase::BodyOfUnknown;
    return;
  }
  const auto now = Clock::now();
  connection.phase = Phase::BodyOfKnown;
  connection.deadline = now + limits_.bodyTime;
  connection.patienceEnd = now + limits_.patience;
}

void WatchedConnections::beginAnswer(WatchedConnection& connection) {
  connection.phase = Phase::Answer;
  connection.deadline = Clock::time_point::max();
}

void WatchedConnections::count(WatchedConnection& connection, std::size_t bytes) const {
  if (connection.phase == Phase::BodyOfKnown) {
    connection.patienceEnd += std::chrono::microseconds(bytes * 1'000'000 / limits_.slowestBody);
  } else if (connection.phase == Phase::Head) {
    connection.headBytes += bytes;
    if (connection.headBytes > limits_.headBytes) {
      cut(connection, "the request's head is too large");
    }
  }
}

WatchedConnections::Clock::time_point WatchedConnections::cutLate(Clock::time_point now) {
  // A deadline that is set before the next call is not earlier than `next`, unless `stop` sets it.
  auto next = now + limits_.headTime;
  for (WatchedConnection& connection : connections_) {
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

WatchedConnections::Clock::time_point WatchedConnections::makeRoom(Clock::time_point now) {
  std::size_t taken = 0;
  WatchedConnection* first = nullptr;
  for (WatchedConnection& connection : connections_) {
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

void WatchedConnections::stop() {
  stopped_ = true;
  for (WatchedConnection& connection : connections_) {
    if (connection.phase == Phase::BodyOfKnown || connection.phase == Phase::Answer) {
      connection.deadline = std::min(connection.deadline, Clock::now() + limits_.lastBodyTime);
    } else if (connection.phase != Phase::Cut) {
      cut(connection, "the server stops");
    }
  }
}

}  // namespace qel::collector
