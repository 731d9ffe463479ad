#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <boost/asio/awaitable.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/beast/core/tcp_stream.hpp>

#include "tools/collector/Answer.h"
#include "tools/collector/RequestCheck.h"
#include "tools/collector/Service.h"

namespace qel::collector {

/// One connection of a client: its TLS handshake and its requests, one after the other.
///
/// **Answers.** A connection ends after every answer except 204, because unread bytes of the
/// request could be mistaken for a new request.
///
/// **Log.** One line for each request, and one if the connection is cut or has no TLS handshake. No
/// line contains a part of a body, a user or a secret.
///
/// **Threads.** Used only on the thread of its socket's loop.
class Connection {
 public:
  /// `service` must outlive this object. `peer` is the address and port of the other end. If
  /// `isBehindProxy`, a PROXY header must come first.
  Connection(Service& service, boost::asio::ip::tcp::socket socket, std::string peer,
             bool isBehindProxy);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /// Serves the connection until it ends. Must be called once.
  boost::asio::awaitable<void> run();

  /// Cuts the connection unless a request is in progress, which is answered.
  void stop();

  /// Whether the connection has had no accepted credentials, and no request is in progress.
  bool isStranger() const;

  /// Cuts the connection without a line in the log.
  void cut();

 private:
  enum class Phase { Handshake, Head, Idle, Request, Closing };
  template <typename Result = void>
  using Awaitable = boost::asio::awaitable<Result>;

  /// @{
  /// The phases of a connection. They throw `boost::system::system_error` if it ends.
  Awaitable<> readClient();
  Awaitable<> shakeHands();
  Awaitable<bool> serveRequest();
  Awaitable<> close();
  /// @}

  /// @{
  /// The steps of a request.
  Awaitable<Answer> answerTo(RequestHead head);
  Awaitable<std::optional<Answer>> identify(const std::string& authorization);
  Awaitable<bool> readBody(const RequestHead& head, std::string& body);
  Awaitable<Answer> store(std::string body);
  Awaitable<> give(const Answer& answer, bool keepsConnection);
  /// @}

  void logEnd(const boost::system::error_code& error) const;

  Service& service_;
  const bool isBehindProxy_;
  const TlsContext tls_;
  std::string peer_;  ///< the client's address and port
  boost::beast::tcp_stream tcp_;
  std::optional<boost::asio::ssl::stream<boost::beast::tcp_stream&>> stream_;
  /// Keeps the loop running while another thread works for this connection.
  boost::asio::executor_work_guard<boost::beast::tcp_stream::executor_type> work_;
  std::string buffer_;  ///< received, not yet used
  Phase phase_ = Phase::Handshake;
  bool isStopped_ = false;
  bool isKnown_ = false;                         ///< whether credentials were accepted
  std::string user_;                             ///< of the request in progress
  std::chrono::steady_clock::time_point begin_;  ///< of the request in progress
};

}  // namespace qel::collector
