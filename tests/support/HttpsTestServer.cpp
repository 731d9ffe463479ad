#include "tests/support/HttpsTestServer.h"

#include <list>
#include <optional>
#include <utility>

#include <boost/asio.hpp>
#include <boost/asio/ssl.hpp>

#include "tests/support/Tally.h"

namespace qel::test {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

asio::ssl::context contextFor(const ServerOptions& options) {
  asio::ssl::context context(asio::ssl::context::tls_server);
  context.use_certificate_chain_file(options.identity.certificate);
  context.use_private_key_file(options.identity.key, asio::ssl::context::pem);
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

}  // namespace

class HttpsTestServer::Implementation {
 public:
  explicit Implementation(ServerOptions given)
      : options(std::move(given)), context(contextFor(options)), accepting([this] { accept(); }) {}

  ~Implementation() {
    ::shutdown(acceptor.native_handle(), SHUT_RDWR);
    accepting.join();
    {
      const std::lock_guard lock(mutex);
      isStopping = true;
      for (auto& socket : sockets) {
        ::shutdown(socket.native_handle(), SHUT_RDWR);
      }
      changed.notify_all();
    }
    threads.clear();
  }

  void accept() {
    error_code error;
    for (tcp::socket socket(io); !acceptor.accept(socket, error); socket = tcp::socket(io)) {
      ::fcntl(socket.native_handle(), F_SETFD, FD_CLOEXEC);
      const std::lock_guard lock(mutex);
      auto& kept = sockets.emplace_back(std::move(socket));
      threads.emplace_back([this, &kept] { serve(kept); });
      accepted.add();
    }
  }

  void serve(tcp::socket& socket) {
    error_code error;
    if (options.protocol == Protocol::PlainHttp || options.protocol == Protocol::Silent) {
      serveRequests(socket);
    } else {
      asio::ssl::stream<tcp::socket&> stream(socket, context);
      if (!stream.handshake(stream.server, error) && serveRequests(stream)) {
        stream.shutdown(error);
      }
    }
    const std::lock_guard lock(mutex);
    socket.close(error);
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
    error_code error;
    asio::read(stream, asio::dynamic_buffer(received), asio::transfer_at_least(atLeast), error);
    return !error;
  }

  template <typename Stream>
  std::optional<Request> readRequest(Stream& stream, std::string& received) const {
    std::size_t headEnd = 0;
    while ((headEnd = received.find("\r\n\r\n")) == std::string::npos) {
      if (!read(stream, received, 1)) {
        return std::nullopt;
      }
      if (options.protocol == Protocol::Silent) {
        received.clear();
      } else if (received[0] < 'A' || received[0] > 'Z') {
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
    error_code error;
    const auto write = [&](const std::string& text) {
      asio::write(stream, asio::buffer(text), error);
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
  asio::io_context io;
  tcp::acceptor acceptor{io, {asio::ip::address_v4::loopback(), 0}};

  Tally accepted;
  Tally requested;

  std::mutex mutex;
  std::condition_variable changed;
  bool isStopping = false;  ///< guarded by the mutex, as are those below
  std::list<tcp::socket> sockets;
  std::vector<std::jthread> threads;
  std::vector<Request> requests;

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

bool HttpsTestServer::waitFor(int connectionCount, int requestCount) const {
  return implementation_->accepted.reaches(connectionCount) &&
         implementation_->requested.reaches(requestCount);
}

}  // namespace qel::test
