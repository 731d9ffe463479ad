#include "tools/collector/Server.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <exception>
#include <mutex>
#include <string_view>
#include <system_error>
#include <utility>

#include <httplib.h>

#include "Application/Log/Analytics/Items/PackageFormat.h"
#include "tools/collector/Answer.h"
#include "tools/collector/ConnectionWatch.h"
#include "tools/collector/PackageReader.h"
#include "tools/collector/TlsSettings.h"
#include "tools/collector/WorkerPool.h"

namespace qel::collector {
namespace {

using std::chrono::steady_clock;

constexpr const char* anyPath = R"([\s\S]*)";

constexpr int waitingConnections = 128;
/// Reading a hostile body takes several times its size, so that larger ones than this wait for one
/// another. A client's have a million bytes and one row more.
constexpr std::size_t largeBody = std::size_t{2} * 1024 * 1024;
constexpr std::size_t mostRequestsOfConnection = 100;
constexpr std::chrono::seconds keepAliveTime{8};
constexpr std::chrono::seconds readTime{10};
constexpr std::chrono::seconds writeTime{10};

bool isPlainJson(const httplib::Request& request) {
  std::string type = request.get_header_value("Content-Type");
  type.erase(std::min(type.find_first_of("; \t"), type.size()));
  std::transform(type.begin(), type.end(), type.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return type == "application/json" && !request.has_header("Content-Encoding");
}

/// Whether another request may follow. After any other answer some of the request may not have been
/// read, which must not become a request.
bool keepsConnection(const httplib::Response& response) { return response.status == 204; }

/// Whether it does so in the one way that every program on the way to here understands alike.
bool tellsLength(const httplib::Request& request) {
  const std::string length = request.get_header_value("Content-Length");
  // To some programs "Transfer-Encoding : chunked" is the header, to others none.
  const bool namesArePlain =
      std::none_of(request.headers.begin(), request.headers.end(), [](const auto& header) {
        return header.first.find_first_of(" \t\r\v\f") != std::string::npos;
      });
  return namesArePlain && request.get_header_value_count("Content-Length") == 1 &&
         !length.empty() && length.find_first_not_of("0123456789") == std::string::npos &&
         !request.has_header("Transfer-Encoding");
}

}  // namespace

class Server::Implementation {
 public:
  Implementation(const ServerSettings& settings, Credentials credentials, Store& store)
      : settings_(settings),
        credentials_(std::move(credentials)),
        store_(store),
        watch_({.connections = settings.workers}),
        http_([this](SSL_CTX& context) { return setUp(context); }) {
    if (setUpFailure_) {
      std::rethrow_exception(setUpFailure_);
    }
    if (!http_.is_valid()) {
      throw qel::exception("cannot set TLS up");
    }
    configure();
  }

  int bind() {
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
    // The library's queue of five makes clients wait a second for their next attempt.
    ::listen(listener_, waitingConnections);
    return bound;
  }

  void run(const std::function<void()>& ready) {
    http_.new_task_queue = [&] {
      ready();
      return new WorkerPool(settings_.workers);
    };
    if (!http_.listen_after_bind()) {
      throw qel::exception("cannot accept connections any more");
    }
  }

  void stop() {
    http_.stop();
    watch_.stop();
  }

 private:
  bool setUp(SSL_CTX& context) {
    try {
      setUpTls(context, settings_.certificate, settings_.key);
      watch_.attachTo(context);
      return true;
    } catch (const std::exception&) {
      setUpFailure_ = std::current_exception();
      return false;
    }
  }

  void configure() {
    http_.set_tcp_nodelay(true);
    // In place of the library's own choice, which lets a second server share the port unnoticed.
    http_.set_socket_options([this](socket_t socket) {
      listener_ = socket;
      const int yes = 1;
      ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
    });
    http_.set_keep_alive_max_count(mostRequestsOfConnection);
    http_.set_keep_alive_timeout(keepAliveTime.count());
    http_.set_read_timeout(readTime);
    http_.set_write_timeout(writeTime);
    http_.set_pre_routing_handler([this](const auto& request, auto& response) {
      if (request.method == "POST") {
        return httplib::Server::HandlerResponse::Unhandled;
      }
      refuse(request, response);
      return httplib::Server::HandlerResponse::Handled;
    });
    http_.Post(anyPath,
               [this](const httplib::Request& request, httplib::Response& response,
                      const httplib::ContentReader& body) { receive(request, response, body); });
    // In place of the library's own answer, which tells the client what was thrown.
    http_.set_exception_handler(
        [this](const httplib::Request&, httplib::Response& response, const std::exception_ptr&) {
          const Answer answer{503, "could not be served"};
          give(response, answer);
          logAnswer(answer, watch_.peerOfThisWorker(), {});
        });
    http_.set_post_routing_handler([](const httplib::Request&, httplib::Response& response) {
      if (!keepsConnection(response)) {
        response.headers.erase("Keep-Alive");
        response.headers.erase("Connection");
        response.set_header("Connection", "close");
      }
    });
    // The library calls it after every answer, its own included.
    http_.set_logger([this](const httplib::Request& request, const httplib::Response& response) {
      // Only what the library answers by itself comes before it has told which connection it is.
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

  /// What is to be said against a request, from its head alone.
  std::optional<Answer> objection(const httplib::Request& request) const {
    if (request.path != log::analytics::format::uploadPath) {
      return Answer{404, "unknown path"};
    }
    if (request.method != "POST") {
      return Answer{405, "only POST is served"};
    }
    if (!credentials_.accept(request.get_header_value("Authorization"))) {
      return Answer{401, "unknown user or wrong secret"};
    }
    if (!isPlainJson(request)) {
      return Answer{415, "only application/json is served"};
    }
    if (!tellsLength(request)) {
      return Answer{411, "no plain Content-Length"};
    }
    if (request.get_header_value<std::uint64_t>("Content-Length") > settings_.largestBody) {
      return Answer{413, "body too large"};
    }
    return std::nullopt;
  }

  void refuse(const httplib::Request& request, httplib::Response& response) {
    const Answer answer = objection(request).value();
    give(response, answer);
    logAnswer(answer, watch_.peerOfThisWorker(), {});
  }

  void receive(const httplib::Request& request, httplib::Response& response,
               const httplib::ContentReader& reader) {
    const auto begin = steady_clock::now();
    auto answer = objection(request);
    watch_.admitBody(request.ssl,
                     answer ? ConnectionWatch::Sender::Unknown : ConnectionWatch::Sender::Known);
    std::string body;
    if (!answer) {
      body.reserve(request.get_header_value<std::uint64_t>("Content-Length"));
    }
    // An answer that comes before the client has sent its body is often lost.
    const bool whole = tellsLength(request) && read(reader, answer ? nullptr : &body);
    if (!answer) {
      watch_.awaitAnswer(request.ssl);
      answer = whole ? store(body) : Answer{400, "the body broke off"};
    }
    give(response, *answer);
    logAnswer(*answer, watch_.peerOfThisWorker(), steady_clock::now() - begin);
  }

  /// Whether the body came whole; one that is too large is read up to the limit.
  bool read(const httplib::ContentReader& reader, std::string* body) const {
    std::size_t received = 0;
    return reader([&](const char* data, std::size_t size) {
      received += size;
      if (body != nullptr) {
        body->append(data, size);
      }
      return received <= settings_.largestBody;
    });
  }

  Answer store(const std::string& body) {
    std::unique_lock turn(largeBodies_, std::defer_lock);
    if (body.size() > largeBody) {
      turn.lock();
    }
    try {
      const Package package = readPackage(body);
      store_.add(package);
      return storedAnswer(package);
    } catch (const std::exception& error) {
      return {503, error.what()};
    }
  }

  const ServerSettings settings_;
  const Credentials credentials_;
  Store& store_;
  std::mutex largeBodies_;
  std::exception_ptr setUpFailure_;
  socket_t listener_ = INVALID_SOCKET;
  ConnectionWatch watch_;
  httplib::SSLServer http_;
};

Server::Server(const ServerSettings& settings, Credentials credentials, Store& store)
    : implementation_(std::make_unique<Implementation>(settings, std::move(credentials), store)) {}

Server::~Server() = default;

int Server::bind() { return implementation_->bind(); }

void Server::run(const std::function<void()>& ready) { implementation_->run(ready); }

void Server::stop() { implementation_->stop(); }

}  // namespace qel::collector
