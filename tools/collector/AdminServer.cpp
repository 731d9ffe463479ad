#include "tools/collector/AdminServer.h"

#include <chrono>
#include <cstddef>
#include <thread>
#include <utility>

#include <boost/asio.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/ScopeGuard.h"

namespace qel::collector {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using asio::ip::tcp;
using boost::system::error_code;
using Request = http::request<http::empty_body>;
using Response = http::response<http::string_body>;

constexpr std::size_t mostConnections = 64;
constexpr std::uint32_t largestHead = 8 * 1024;
constexpr std::chrono::seconds longestConnection{5};
constexpr std::chrono::milliseconds pauseAfterFailure{100};

/// A page, or the reason why there is none.
AdminPage pageFor(const AdminPages& pages, const Request& request) {
  const auto page = pages.find(std::string(request.target().substr(0, request.target().find('?'))));
  if (page == pages.end()) {
    return {"unknown path\n", 404};
  }
  if (request.method() != http::verb::get) {
    return {"only GET is served\n", 405};
  }
  try {
    return page->second();
  } catch (const std::exception& error) {
    return {std::string(error.what()) + '\n', 500};
  }
}

Response responseFor(const AdminPages& pages, const Request& request) {
  AdminPage page = pageFor(pages, request);
  Response response;
  response.result(static_cast<unsigned>(page.status));
  response.set(http::field::content_type, page.type);
  if (page.status == 405) {
    response.set(http::field::allow, "GET");
  }
  response.body() = std::move(page.text);
  response.keep_alive(false);
  response.prepare_payload();
  return response;
}

}  // namespace

class AdminServer::Implementation {
 public:
  Implementation(const tools::Endpoint& listen, AdminPages pages)
      : pages_(std::move(pages)), acceptor_(listenOn(listen)), host_(listen.host) {
    asio::co_spawn(io_, accept(), [](const std::exception_ptr& failure) {
      if (failure) {  // ends the process, so that its supervisor starts it again
        std::rethrow_exception(failure);
      }
    });
    thread_ = std::thread([this] { io_.run(); });
  }

  ~Implementation() {
    io_.stop();
    thread_.join();
  }

  tools::Endpoint endpoint() const { return {host_, acceptor_.local_endpoint().port()}; }

 private:
  tcp::acceptor listenOn(const tools::Endpoint& listen) {
    try {
      const auto found = tcp::resolver(io_).resolve(listen.host, std::to_string(listen.port),
                                                    tcp::resolver::passive);
      return {io_, *found.begin()};
    } catch (const boost::system::system_error& error) {
      throw qel::exception("cannot listen on " + tools::toText(listen) + ": " +
                           error.code().message());
    }
  }

  asio::awaitable<void> accept() {
    asio::steady_timer pause(io_);
    for (;;) {
      error_code failed;
      tcp::socket socket =
          co_await acceptor_.async_accept(asio::redirect_error(asio::use_awaitable, failed));
      if (failed) {  // for example, no descriptor is free
        pause.expires_after(pauseAfterFailure);
        co_await pause.async_wait(asio::use_awaitable);
      } else if (connections_ < mostConnections) {
        asio::co_spawn(io_, serve(beast::tcp_stream(std::move(socket))), asio::detached);
      }
    }
  }

  /// Ends with an exception, which nobody receives, if the connection fails or takes too long.
  asio::awaitable<void> serve(beast::tcp_stream stream) {
    ++connections_;
    const ScopeGuard end([this] { --connections_; });
    stream.expires_after(longestConnection);
    beast::flat_buffer buffer(largestHead);
    http::request_parser<http::empty_body> parser;
    parser.header_limit(largestHead);
    co_await http::async_read_header(stream, buffer, parser, asio::use_awaitable);
    const Response response = responseFor(pages_, parser.get());
    co_await http::async_write(stream, response, asio::use_awaitable);
    stream.socket().shutdown(tcp::socket::shutdown_send);
  }

  const AdminPages pages_;
  std::size_t connections_ = 0;  ///< used only on the server's thread
  asio::io_context io_{1};
  tcp::acceptor acceptor_;
  const std::string host_;
  std::thread thread_;
};

AdminServer::AdminServer(const tools::Endpoint& listen, AdminPages pages)
    : implementation_(std::make_unique<Implementation>(listen, std::move(pages))) {}

AdminServer::~AdminServer() = default;

tools::Endpoint AdminServer::endpoint() const { return implementation_->endpoint(); }

AdminPages adminPages(std::function<std::string()> obstacle, std::function<std::string()> metrics) {
  return {
      {"/health", [] { return AdminPage{"ok\n"}; }},
      {"/ready",
       [obstacle = std::move(obstacle)] {
         const std::string word = obstacle();
         return word.empty() ? AdminPage{"ready\n"} : AdminPage{word + '\n', 503};
       }},
      {"/metrics",
       [metrics = std::move(metrics)] {
         return AdminPage{metrics(), 200, "text/plain; version=0.0.4; charset=utf-8"};
       }},
  };
}

}  // namespace qel::collector
