#include "tests/support/HttpsTestServer.h"

#include <list>
#include <optional>
#include <utility>

#include <boost/asio.hpp>
#include <boost/asio/ssl.hpp>

#include "host/QelUtilities/PathText.h"
#include "tests/support/Tally.h"

namespace qel::test {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

asio::ssl::context contextFor(const ServerOptions& options) {
  asio::ssl::context context(asio::ssl::context::tls_server);
  const auto identity = utilities::utf8FromPath(options.identity);
  context.use_certificate_chain_file(identity);
  context.use_private_key_file(identity, asio::ssl::context::pem);
  if (options.protocol == Protocol::Tls11Only) {
    SSL_CTX_set_min_proto_version(context.native_handle(), TLS1_1_VERSION);
    SSL_CTX_set_max_proto_version(context.native_handle(), TLS1_1_VERSION);
    SSL_CTX_set_cipher_list(context.native_handle(), "ALL:@SECLEVEL=0");
  }
  return context;
}

std::string headOf(const Reply& reply) {
  return "HTTP/1.1 " + std::to_string(reply.status) + " Reason\r\n" + reply.headers +
         "Content-Length: " + std::to_string(reply.body.size()) + "\r\n\r\n";
}

template <typename Socket>
void close(Socket& socket) {
  error_code ignored;
  socket.close(ignored);
}

/// Runs an asynchronous operation of a stream to its end. False when it fails. Unlike a synchronous
/// operation, it ends on every system when the stream's context closes the socket.
template <typename Stream, typename Operation>
bool complete(Stream& stream, Operation operation) {
  auto& io = static_cast<asio::io_context&>(stream.get_executor().context());
  std::optional<error_code> result;
  operation([&result](error_code error, auto... /*sizes*/) { result = error; });
  while (!result) {
    io.run_one();
  }
  return !*result;
}

}  // namespace

class HttpsTestServer::Implementation {
 public:
  explicit Implementation(ServerOptions given)
      : options(std::move(given)), context(contextFor(options)), accepting([this] {
          accept();
          io.run();
        }) {}

  ~Implementation() {
    asio::post(io, [this] { close(acceptor); });
    accepting.join();
    {
      const std::lock_guard lock(mutex);
      isStopping = true;
      changed.notify_all();
    }
    for (auto& connection : connections) {
      asio::post(connection.io, [&socket = connection.socket] { close(socket); });
    }
  }

  /// A connection of a client. Its thread runs all its operations.
  struct Connection {
    asio::io_context io;
    const asio::executor_work_guard<asio::io_context::executor_type> open{io.get_executor()};
    tcp::socket socket{io};
    std::jthread thread;
  };

  void accept() {
    auto& connection = connections.emplace_back();
    acceptor.async_accept(connection.socket, [this, &connection](error_code error) {
      if (!error) {
        connection.thread = std::jthread([this, &connection] { serve(connection); });
        accepted.add();
        accept();
      }
    });
  }

  void serve(Connection& connection) {
    auto& socket = connection.socket;
    if (options.protocol == Protocol::PlainHttp) {
      serveRequests(socket);
    } else {
      asio::ssl::stream<tcp::socket&> stream(socket, context);
      if (complete(stream, [&](auto done) { stream.async_handshake(stream.server, done); }) &&
          serveRequests(stream)) {
        // Does not wait for the client's answer, because some clients wait for the end of TCP
        // first.
        SSL_set_shutdown(stream.native_handle(), SSL_RECEIVED_SHUTDOWN);
        complete(stream, [&](auto done) { stream.async_shutdown(done); });
      }
    }
    close(socket);
  }

  /// Serves one request after the other. False when the connection must be reset.
  template <typename Stream>
  bool serveRequests(Stream& stream) {
    std::string received;
    while (const auto request = readRequest(stream, received)) {
      {
        const std::lock_guard lock(mutex);
        requests.push_back(*request);
        requested.add();
      }
      const auto reply = options.answer(*request);
      give(stream, reply);
      if (reply.manner == Manner::Reset || reply.manner == Manner::ResetUnanswered) {
        stream.lowest_layer().set_option(asio::socket_base::linger(true, 0));
        return false;
      }
      if (reply.manner != Manner::Ordinary || request->head.empty()) {
        return true;
      }
      while (options.answerAfter == AnswerAfter::Headers && read(stream, received, 1)) {
        received.clear();
      }
    }
    return true;
  }

  template <typename Stream>
  static bool read(Stream& stream, std::string& received, std::size_t atLeast) {
    return complete(stream, [&](auto done) {
      asio::async_read(stream, asio::dynamic_buffer(received), asio::transfer_at_least(atLeast),
                       done);
    });
  }

  template <typename Stream>
  std::optional<Request> readRequest(Stream& stream, std::string& received) const {
    std::size_t headEnd = 0;
    while ((headEnd = received.find("\r\n\r\n")) == std::string::npos) {
      if (!read(stream, received, 1)) {
        return std::nullopt;
      }
      if (received[0] < 'A' || received[0] > 'Z') {
        return Request{.head = "", .body = std::exchange(received, "")};
      }
    }
    Request request{.head = received.substr(0, headEnd + 4), .body = ""};
    received.erase(0, headEnd + 4);
    const std::string lengthName = "\r\nContent-Length: ";
    const auto lengthLine = request.head.find(lengthName);
    if (options.answerAfter == AnswerAfter::WholeRequest && lengthLine != std::string::npos) {
      const auto length = std::stoul(request.head.substr(lengthLine + lengthName.size()));
      if (received.size() < length && !read(stream, received, length - received.size())) {
        return std::nullopt;
      }
      request.body = received.substr(0, length);
      received.erase(0, length);
    }
    return request;
  }

  template <typename Stream>
  void give(Stream& stream, const Reply& reply) {
    const auto write = [&](const std::string& text) {
      complete(stream, [&](auto done) { asio::async_write(stream, asio::buffer(text), done); });
    };
    const auto& [status, manner, headers, body] = reply;
    if (manner == Manner::Stalled) {
      pauseFor(hangingTest);
    } else if (manner == Manner::Ordinary) {
      write(headOf(reply) + body);
    } else if (manner == Manner::Dripped) {
      write(headOf(reply));
      for (auto next = body.begin(); next != body.end() && pauseFor(100ms); ++next) {
        write({*next});
      }
    } else if (manner != Manner::ResetUnanswered) {
      write(headOf(reply) + body.substr(0, body.size() / 2));
    }
  }

  /// False when the server stops during the pause.
  bool pauseFor(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex);
    return !changed.wait_for(lock, time, [this] { return isStopping; });
  }

  const ServerOptions options;
  asio::ssl::context context;

  Tally accepted;
  Tally requested;

  std::mutex mutex;
  std::condition_variable changed;
  bool isStopping = false;        ///< guarded by the mutex
  std::vector<Request> requests;  ///< guarded by the mutex

  asio::io_context io;  ///< runs the acceptor
  tcp::acceptor acceptor{io, {asio::ip::address_v4::loopback(), 0}};
  std::list<Connection> connections;  ///< only the accepting thread changes the list
  std::thread accepting;
};

HttpsTestServer::HttpsTestServer(ServerOptions options)
    : implementation_(std::make_unique<Implementation>(std::move(options))) {}

HttpsTestServer::~HttpsTestServer() = default;

std::string HttpsTestServer::address() const {
  return "127.0.0.1:" + std::to_string(implementation_->acceptor.local_endpoint().port());
}

int HttpsTestServer::connections() const { return implementation_->accepted.count(); }

std::vector<Request> HttpsTestServer::requests() const {
  const std::lock_guard lock(implementation_->mutex);
  return implementation_->requests;
}

bool HttpsTestServer::waitFor(int requestCount) const {
  return implementation_->requested.reaches(requestCount);
}

}  // namespace qel::test
