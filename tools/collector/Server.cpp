#include "tools/collector/Server.h"

#include <cerrno>
#include <chrono>
#include <exception>
#include <system_error>
#include <utility>

#include <httplib.h>

#include "host/QelUtilities/Exception.h"
#include "tools/collector/Answer.h"
#include "tools/collector/ConnectionWatch.h"
#include "tools/collector/PackageReceiver.h"
#include "tools/collector/TlsSettings.h"
#include "tools/collector/WorkerPool.h"

namespace qel::collector {
namespace {

constexpr const char* anyPath = R"([\s\S]*)";

constexpr int waitingConnections = 128;
constexpr std::size_t mostRequestsOfConnection = 100;
constexpr std::chrono::seconds keepAliveTime{8};
constexpr std::chrono::seconds readTime{10};
constexpr std::chrono::seconds writeTime{10};

/// Whether the connection may carry another request. After any answer except 204, unread bytes of
/// the request could be mistaken for a new request.
bool keepsConnection(const httplib::Response& response) { return response.status == 204; }

}  // namespace

class Server::Implementation {
 public:
  Implementation(const ServerSettings& settings, Credentials credentials, StoreWriter& store);
  int bind();
  void run(const std::function<void()>& ready);
  void stop();

 private:
  bool setUp(SSL_CTX& context);
  void configureConnections();
  void configureRequests();
  void configureAnswers();

  const ServerSettings settings_;
  ConnectionWatch watch_;
  PackageReceiver receiver_;
  std::exception_ptr setUpFailure_;
  socket_t listener_ = INVALID_SOCKET;
  httplib::SSLServer http_;
};

Server::Implementation::Implementation(const ServerSettings& settings, Credentials credentials,
                                       StoreWriter& store)
    : settings_(settings),
      watch_({.connections = settings.workers}),
      receiver_(settings.largestBody, std::move(credentials), store, watch_),
      http_([this](SSL_CTX& context) { return setUp(context); }) {
  if (setUpFailure_) {
    std::rethrow_exception(setUpFailure_);
  }
  if (!http_.is_valid()) {
    throw qel::exception("cannot set TLS up");
  }
  configureConnections();
  configureRequests();
  configureAnswers();
}

bool Server::Implementation::setUp(SSL_CTX& context) {
  try {
    setUpTls(context, settings_.certificate, settings_.key);
    watch_.attachTo(context);
    return true;
  } catch (const std::exception&) {
    setUpFailure_ = std::current_exception();
    return false;
  }
}

void Server::Implementation::configureConnections() {
  http_.set_tcp_nodelay(true);
  // The library's default option would let a second server share the port unnoticed.
  http_.set_socket_options([this](socket_t socket) {
    listener_ = socket;
    const int yes = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
  });
  http_.set_keep_alive_max_count(mostRequestsOfConnection);
  http_.set_keep_alive_timeout(keepAliveTime.count());
  http_.set_read_timeout(readTime);
  http_.set_write_timeout(writeTime);
}

void Server::Implementation::configureRequests() {
  http_.set_pre_routing_handler([this](const auto& request, auto& response) {
    if (request.method == "POST") {
      return httplib::Server::HandlerResponse::Unhandled;
    }
    receiver_.refuse(request, response);
    return httplib::Server::HandlerResponse::Handled;
  });
  http_.Post(anyPath, [this](const httplib::Request& request, httplib::Response& response,
                             const httplib::ContentReader& body) {
    receiver_.receive(request, response, body);
  });
  // The library's default answer would disclose the exception's message to the client.
  http_.set_exception_handler(
      [this](const httplib::Request&, httplib::Response& response, const std::exception_ptr&) {
        const Answer answer{503, "could not be served"};
        give(response, answer);
        logAnswer(answer, watch_.peerOfThisWorker(), {});
      });
}

void Server::Implementation::configureAnswers() {
  http_.set_post_routing_handler([](const httplib::Request&, httplib::Response& response) {
    if (!keepsConnection(response)) {
      response.headers.erase("Keep-Alive");
      response.headers.erase("Connection");
      response.set_header("Connection", "close");
    }
  });
  // The library calls this function after every answer, including answers that it generates itself.
  http_.set_logger([this](const httplib::Request& request, const httplib::Response& response) {
    // If the library itself answers a request, the request has no connection yet.
    if (request.ssl == nullptr) {
      logAnswer({response.status, "malformed request"}, watch_.peerOfThisWorker(), {});
    }
    if (keepsConnection(response)) {
      watch_.awaitHead(request.ssl);
    } else {
      watch_.endConnectionOfThisWorker();
    }
  });
}

int Server::Implementation::bind() {
  const auto& [host, port] = settings_.listen;
  errno = 0;
  const int bound = port == 0                        ? http_.bind_to_any_port(host)
                    : http_.bind_to_port(host, port) ? port
                                                     : -1;
  if (bound < 0) {
    throw qel::exception("cannot listen on " + tools::toText(settings_.listen) + ": " +
                         (errno == 0 ? "this is no address of the machine"
                                     : std::generic_category().message(errno)));
  }
  // The library's queue for five new connections is too short: a client that finds it full retries
  // only after a second.
  ::listen(listener_, waitingConnections);
  return bound;
}

void Server::Implementation::run(const std::function<void()>& ready) {
  http_.new_task_queue = [&] {
    ready();
    return new WorkerPool(settings_.workers);
  };
  if (!http_.listen_after_bind()) {
    throw qel::exception("cannot accept connections any more");
  }
}

void Server::Implementation::stop() {
  http_.stop();
  watch_.stop();
}

Server::Server(const ServerSettings& settings, Credentials credentials, StoreWriter& store)
    : implementation_(std::make_unique<Implementation>(settings, std::move(credentials), store)) {}

Server::~Server() = default;

int Server::bind() { return implementation_->bind(); }

void Server::run(const std::function<void()>& ready) { implementation_->run(ready); }

void Server::stop() { implementation_->stop(); }

}  // namespace qel::collector
