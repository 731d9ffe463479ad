#include "tests/support/HttpsTestServer.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <sstream>
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

/// The head of a request, without the blank line.
Request parseHead(const std::string& head) {
  Request request;
  std::istringstream lines(head);
  std::string line;
  lines >> request.method >> request.path;
  std::getline(lines, line);
  while (std::getline(lines, line)) {
    const auto colon = line.find(": ");
    std::string name = line.substr(0, colon);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    request.headers[name] = line.substr(colon + 2, line.find('\r') - colon - 2);
  }
  return request;
}

std::string headOf(const Reply& reply) {
  std::string head = "HTTP/1.1 " + std::to_string(reply.status) + " Told So\r\n";
  for (const auto& [name, value] : reply.headers) {
    head.append(name).append(": ").append(value).append("\r\n");
  }
  if (reply.manner != Manner::WithoutLength) {
    head += "Content-Length: " + std::to_string(reply.body.size()) + "\r\n";
  }
  return head + "\r\n";
}

}  // namespace

/// The server's end of one connection.
class HttpsTestServer::Stream {
 public:
  Stream(int socket, SSL_CTX* tls) : socket_(socket), tls_(tls ? SSL_new(tls) : nullptr) {}
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() { SSL_free(tls_); }

  bool open() { return !tls_ || (SSL_set_fd(tls_, socket_) == 1 && SSL_accept(tls_) == 1); }

  /// Appends what comes next; false at the end.
  bool read(std::string& text) {
    std::array<char, 16'384> part{};
    const auto count = tls_ ? SSL_read(tls_, part.data(), static_cast<int>(part.size()))
                            : ::recv(socket_, part.data(), part.size(), 0);
    if (count <= 0) {
      return false;
    }
    text.append(part.data(), static_cast<std::size_t>(count));
    return true;
  }

  bool write(std::string_view text) {
    return text.empty() || (tls_ ? SSL_write(tls_, text.data(), static_cast<int>(text.size()))
                                 : ::send(socket_, text.data(), text.size(), 0)) > 0;
  }

  /// Reads until the client closes its end.
  void drain() {
    for (std::string discarded; read(discarded); discarded.clear()) {
    }
  }

  void finish() {
    if (tls_) {
      SSL_shutdown(tls_);
    }
    ::shutdown(socket_, SHUT_WR);
  }

  /// Makes closing the socket reset the connection.
  void reset() const {
    const linger atOnce{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
  }

  std::string received;  ///< beyond the last request

 private:
  const int socket_;
  SSL* const tls_;
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

bool HttpsTestServer::waitForConnections(int count) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, hangingTest,
                           [&] { return std::cmp_greater_equal(connections_.size(), count); });
}

bool HttpsTestServer::waitForRequests(std::size_t count) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, hangingTest, [&] { return requests_.size() >= count; });
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
    } else if (stream.open()) {
      while (serveRequest(stream)) {
      }
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
  if (!give(stream, options_.answer(*request))) {
    return false;
  }
  if (options_.answerAfter == AnswerAfter::Headers) {
    stream.drain();
    return false;
  }
  return !request->method.empty();
}

std::optional<Request> HttpsTestServer::readRequest(Stream& stream) const {
  auto& received = stream.received;
  auto headEnd = received.find("\r\n\r\n");
  while (headEnd == std::string::npos) {
    if (!stream.read(received)) {
      return std::nullopt;
    }
    if (received[0] < 'A' || received[0] > 'Z') {
      Request noHttp;
      noHttp.body.swap(received);
      return noHttp;
    }
    headEnd = received.find("\r\n\r\n");
  }
  Request request = parseHead(received.substr(0, headEnd));
  received.erase(0, headEnd + 4);
  if (options_.answerAfter == AnswerAfter::Headers) {
    return request;
  }
  const auto length = std::stoul("0" + request.headers["content-length"]);
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
  const std::string head = headOf(reply);
  const bool isCut = reply.manner == Manner::Truncated || reply.manner == Manner::Reset;
  const auto body = std::string_view(reply.body).substr(0, reply.body.size() / (isCut ? 2 : 1));
  switch (reply.manner) {
    case Manner::Ordinary:
      return stream.write(head) && stream.write(body);
    case Manner::Dripped:
      return stream.write(head) && drip(stream, body);
    case Manner::Stalled:
      pauseFor(hangingTest);
      return false;
    case Manner::ThenClosed:
    case Manner::WithoutLength:
    case Manner::Truncated:
      stream.write(head);
      stream.write(body);
      stream.finish();
      return false;
    case Manner::Reset:
      stream.write(head);
      stream.write(body);
      stream.reset();
      return false;
    case Manner::ResetUnanswered:
      stream.reset();
      return false;
  }
  return false;
}

bool HttpsTestServer::drip(Stream& stream, std::string_view text) {
  constexpr std::chrono::milliseconds pause{100};
  return std::all_of(text.begin(), text.end(), [&](const char& c) {
    return pauseFor(pause) && stream.write({&c, 1});
  });
}

bool HttpsTestServer::pauseFor(std::chrono::milliseconds time) {
  std::unique_lock lock(mutex_);
  return !changed_.wait_for(lock, time, [this] { return stopping_; });
}

}  // namespace qel::test
