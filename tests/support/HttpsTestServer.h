#pragma once

#include <functional>
#include <vector>

#include "tests/support/TestCertificates.h"

namespace qel::test {

/// The head is empty when the bytes are no HTTP; the body then has all of them.
struct Request {
  std::string head;
  std::string body;
};

/// How an answer is given: whole and the connection is kept; half of the body, then closed
/// unannounced; half of the body, then reset; the body at ten bytes a second; not given, and
/// nothing more is read; not given, and the connection is reset.
enum class Manner { Ordinary, Truncated, Reset, Dripped, Stalled, ResetUnanswered };

/// The headers are lines, each with its CR LF.
struct Reply {
  int status = 200;
  Manner manner = Manner::Ordinary;
  std::string headers = {};
  std::string body = {};
};

enum class Protocol { Tls, Tls11Only, PlainHttp };

/// An answer after the headers discards the body, and is the only one on its connection.
enum class AnswerAfter { WholeRequest, Headers };

struct ServerOptions {
  std::filesystem::path identity = {};
  /// Called on the connections' threads; the default answers 200.
  std::function<Reply(const Request&)> answer = [](const Request&) { return Reply{}; };
  Protocol protocol = Protocol::Tls;
  AnswerAfter answerAfter = AnswerAfter::WholeRequest;
};

/// A web server on the loopback interface, whose options can make it misbehave. It serves from its
/// constructor to its destructor, each connection on a thread of its own.
class HttpsTestServer {
 public:
  explicit HttpsTestServer(ServerOptions options);
  ~HttpsTestServer();

  /// As "address:port".
  std::string address() const;

  /// The number of connections, and all requests in the order of their arrival. Any thread.
  int connections() const;
  std::vector<Request> requests() const;

  /// Waits for that many requests. Whether they came.
  bool waitFor(int requestCount) const;

 private:
  class Implementation;
  const std::unique_ptr<Implementation> implementation_;
};

}  // namespace qel::test
