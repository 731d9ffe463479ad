#include "tests/support/HttpsTestServer.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <stdexcept>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace qel::test {
namespace {

constexpr std::chrono::seconds hangingTest{30};
constexpr std::chrono::milliseconds drip{100};

void require(bool succeeded, const char* what) {
  if (!succeeded) {
    throw std::runtime_error(std::string("cannot start the test server: ") + what);
  }
}

SSL_CTX* makeTls(const ServerOptions& options) {
  SSL_CTX* const tls = SSL_CTX_new(TLS_server_method());
  const auto& [certificate, key] = options.identity;
  require(SSL_CTX_use_certificate_chain_file(tls, certificate.c_str()) == 1, "certificate");
  require(SSL_CTX_use_PrivateKey_file(tls, key.c_str(), SSL_FILETYPE_PEM) == 1, "key");
  if (options.protocol == Protocol::Tls11Only) {
    require(SSL_CTX_set_min_proto_version(tls, TLS1_1_VERSION) == 1 &&
                SSL_CTX_set_max_proto_version(tls, TLS1_1_VERSION) == 1 &&
                SSL_CTX_set_cipher_list(tls, "ALL:@SECLEVEL=0") == 1,
            "TLS 1.1");
  }
  return tls;
}

std::string headOf(const Reply& reply) {
  const std::string head = "HTTP/1.1 " + std::to_string(reply.status) + " Told So\r\n";
  return head + reply.headers + "Content-Length: " + std::to_string(reply.body.size()) + "\r\n\r\n";
}

}  // namespace

/// The server's end of one connection. A TLS connection is closed with the alert that TLS asks for.
class HttpsTestServer::Stream {
 public:
  Stream(int socket, SSL_CTX* tls)
      : socket_(socket), bio_(BIO_new_socket(socket, BIO_NOCLOSE), BIO_free_all) {
    if (tls) {
      bio_.reset(BIO_push(BIO_new_ssl(tls, 0), bio_.release()));
    }
  }

  /// Appends what comes next; false at the end.
  bool read(std::string& text) {
    std::array<char, 16'384> part{};
    const int count = BIO_read(bio_.get(), part.data(), static_cast<int>(part.size()));
    text.append(part.data(), static_cast<std::size_t>(std::max(count, 0)));
    return count > 0;
  }

  bool write(std::string_view text) {
    return text.empty() || BIO_write(bio_.get(), text.data(), static_cast<int>(text.size())) > 0;
  }

  /// Reads until the client closes its end.
  void drain() {
    for (std::string discarded; read(discarded); discarded.clear()) {
    }
  }

  /// Makes closing the socket reset the connection, which is one of TLS.
  void reset() {
    SSL* tls = nullptr;
    BIO_get_ssl(bio_.get(), &tls);
    SSL_set_quiet_shutdown(tls, 1);
    const linger atOnce{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
  }

  std::string received;  ///< beyond the last request

 private:
  const int socket_;
  std::unique_ptr<BIO, void (*)(BIO*)> bio_;
};

HttpsTestServer::HttpsTestServer(ServerOptions options)
    : options_(std::move(options)),
      tls_(nullptr, SSL_CTX_free),
      listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  if (options_.protocol == Protocol::Tls || options_.protocol == Protocol::Tls11Only) {
    tls_.reset(makeTls(options_));
  }
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  require(::bind(listener_, generic, size) == 0 && ::listen(listener_, SOMAXCONN) == 0 &&
              ::getsockname(listener_, generic, &size) == 0,
          "socket");
  port_ = ntohs(address.sin_port);
  accepting_ = std::thread([this] { acceptConnections(); });
}

HttpsTestServer::~HttpsTestServer() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    for (const int socket : openSockets_) {
      ::shutdown(socket, SHUT_RDWR);
    }
    changed_.notify_all();
  }
  ::shutdown(listener_, SHUT_RDWR);
  accepting_.join();
  for (auto& connection : connections_) {
    connection.join();
  }
  ::close(listener_);
}

std::string HttpsTestServer::address() const { return "127.0.0.1:" + std::to_string(port_); }

int HttpsTestServer::connections() const {
  const std::lock_guard lock(mutex_);
  return static_cast<int>(connections_.size());
}

std::vector<Request> HttpsTestServer::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

bool HttpsTestServer::waitFor(std::size_t connections, std::size_t requests) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, hangingTest, [&] {
    return connections_.size() >= connections && requests_.size() >= requests;
  });
}

void HttpsTestServer::acceptConnections() {
  for (;;) {
    const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) {
      return;
    }
    const std::lock_guard lock(mutex_);
    if (stopping_) {
      ::close(socket);
      return;
    }
    openSockets_.insert(socket);
    connections_.emplace_back([this, socket] { serve(socket); });
    changed_.notify_all();
  }
}

void HttpsTestServer::serve(int socket) {
  // The client's own protection against this signal is not to be had for it.
  sigset_t brokenPipe;
  sigemptyset(&brokenPipe);
  sigaddset(&brokenPipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
  {
    Stream stream(socket, tls_.get());
    if (options_.protocol == Protocol::Silent) {
      stream.drain();
    }
    while (serveRequest(stream)) {
    }
  }
  const std::lock_guard lock(mutex_);
  openSockets_.erase(socket);
  ::close(socket);
}

bool HttpsTestServer::serveRequest(Stream& stream) {
  const auto request = readRequest(stream);
  if (!request) {
    return false;
  }
  {
    const std::lock_guard lock(mutex_);
    requests_.push_back(*request);
    changed_.notify_all();
  }
  const bool isKept = give(stream, options_.answer(*request)) && !request->head.empty();
  if (isKept && options_.answerAfter == AnswerAfter::Headers) {
    stream.drain();
  }
  return isKept && options_.answerAfter == AnswerAfter::WholeRequest;
}

std::optional<Request> HttpsTestServer::readRequest(Stream& stream) const {
  auto& received = stream.received;
  std::size_t headEnd = 0;
  while ((headEnd = received.find("\r\n\r\n")) == std::string::npos) {
    if (!stream.read(received)) {
      return std::nullopt;
    }
    if (received[0] < 'A' || received[0] > 'Z') {
      return Request{.head = "", .body = std::exchange(received, "")};
    }
  }
  Request request{.head = received.substr(0, headEnd + 2), .body = ""};
  received.erase(0, headEnd + 4);
  const std::string_view lengthName = "\r\nContent-Length: ";
  const auto lengthLine = request.head.find(lengthName);
  if (options_.answerAfter == AnswerAfter::Headers || lengthLine == std::string::npos) {
    return request;
  }
  const auto length = std::stoul(request.head.substr(lengthLine + lengthName.size()));
  while (received.size() < length) {
    if (!stream.read(received)) {
      return std::nullopt;
    }
  }
  request.body = received.substr(0, length);
  received.erase(0, length);
  return request;
}

bool HttpsTestServer::give(Stream& stream, const Reply& reply) {
  const std::string_view body = reply.body;
  switch (reply.manner) {
    case Manner::Ordinary:
      return stream.write(headOf(reply)) && stream.write(body);
    case Manner::Truncated:
    case Manner::Reset:
      stream.write(headOf(reply));
      stream.write(body.substr(0, body.size() / 2));
      break;
    case Manner::Dripped:
      stream.write(headOf(reply));
      for (auto rest = body; !rest.empty() && pauseFor(drip); rest.remove_prefix(1)) {
        stream.write(rest.substr(0, 1));
      }
      break;
    case Manner::Stalled:
      pauseFor(hangingTest);
      break;
    case Manner::ResetUnanswered:
      break;
  }
  if (reply.manner == Manner::Reset || reply.manner == Manner::ResetUnanswered) {
    stream.reset();
  }
  return false;
}

bool HttpsTestServer::pauseFor(std::chrono::milliseconds time) {
  std::unique_lock lock(mutex_);
  return !changed_.wait_for(lock, time, [this] { return stopping_; });
}

}  // namespace qel::test
