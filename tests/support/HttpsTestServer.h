#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/support/TestCertificates.h"

struct ssl_ctx_st;

namespace qel::test {

/// What reached the server.
struct Request {
  std::string head;  ///< empty when what came is no HTTP; it is then all in `body`
  std::string body;
};

/// How an answer is given.
enum class Manner {
  Ordinary,        ///< whole, and the connection is kept
  Truncated,       ///< half of the body, then closed unannounced
  Reset,           ///< half of the body, then reset
  Dripped,         ///< the body at ten bytes a second
  Stalled,         ///< neither given, nor anything read any more
  ResetUnanswered  ///< nothing, and reset
};

struct Reply {
  int status = 200;
  Manner manner = Manner::Ordinary;
  std::string headers = {};  ///< lines, each with its CR LF
  std::string body = {};
};

enum class Protocol {
  Tls,
  Tls11Only,
  PlainHttp,
  Silent  ///< accepts connections and says nothing
};

enum class AnswerAfter {
  WholeRequest,
  Headers  ///< the body is then only discarded; one request a connection
};

struct ServerOptions {
  ServerIdentity identity;
  /// Called on the connections' threads; the default answers 200.
  std::function<Reply(const Request&)> answer = [](const Request&) { return Reply{}; };
  Protocol protocol = Protocol::Tls;
  AnswerAfter answerAfter = AnswerAfter::WholeRequest;
};

/// A web server on the loopback interface that behaves, or misbehaves, as told. It serves from its
/// constructor to its destructor, each connection on a thread of its own.
class HttpsTestServer {
 public:
  explicit HttpsTestServer(ServerOptions options);
  HttpsTestServer(const HttpsTestServer&) = delete;
  HttpsTestServer& operator=(const HttpsTestServer&) = delete;
  ~HttpsTestServer();

  /// As "address:port".
  std::string address() const;

  /// How many connections were made, and all requests in the order of their arrival. Any thread.
  int connections() const;
  std::vector<Request> requests() const;

  /// Waits until that many have come; false after a time that only a hanging test needs.
  bool waitFor(std::size_t connections, std::size_t requests) const;

 private:
  class Stream;

  void acceptConnections();
  void serve(int socket);
  std::optional<Request> readRequest(Stream& stream) const;
  // False when the connection is to be closed:
  bool serveRequest(Stream& stream);
  bool give(Stream& stream, const Reply& reply);
  /// False when the server stops meanwhile.
  bool pauseFor(std::chrono::milliseconds time);

  const ServerOptions options_;
  std::unique_ptr<ssl_ctx_st, void (*)(ssl_ctx_st*)> tls_;
  const int listener_;
  int port_ = 0;

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  bool stopping_ = false;  ///< guarded by mutex_, as are those below
  std::set<int> openSockets_;
  std::vector<std::thread> connections_;
  std::vector<Request> requests_;

  std::thread accepting_;
};

}  // namespace qel::test
