#include "tools/collector/AdminConnection.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <sstream>
#include <utility>

#include <boost/asio/post.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>

#include "tools/collector/Answer.h"

namespace qel::collector {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;

using asio::use_awaitable;
using std::chrono::steady_clock;

constexpr char firstByteOfTls = 0x16;
constexpr std::chrono::seconds closeTime{2};
constexpr std::size_t mostDiscarded = std::size_t{4} << 20;

constexpr const char* pagePolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; "
    "connect-src 'self'; base-uri 'none'; form-action 'self'; frame-ancestors 'none'";

asio::awaitable<AdminPage> fetch(Page& page, std::string target) {
  return asio::async_initiate<const asio::use_awaitable_t<>, void(AdminPage)>(
      [&page](auto handler, const std::string& wanted) {
        // The page copies functions, but the handler can only be moved.
        auto shared = std::make_shared<decltype(handler)>(std::move(handler));
        page.get(wanted, [shared](AdminPage answer) mutable {
          auto executor = asio::get_associated_executor(*shared);
          // Moved, so that the handler is destroyed on the server's thread.
          asio::post(executor, [own = std::move(shared), result = std::move(answer)]() mutable {
            (*own)(std::move(result));
          });
        });
      },
      use_awaitable, std::move(target));
}

asio::ip::tcp::endpoint peerOf(const beast::tcp_stream& stream) {
  boost::system::error_code ignored;
  return stream.socket().remote_endpoint(ignored);
}

std::string textOf(const asio::ip::tcp::endpoint& endpoint) {
  std::ostringstream text;
  text << endpoint;
  return text.str();
}

AdminPage onlyGet() { return {"only GET is served\n", 405, plainText, {{"Allow", "GET"}}}; }

AdminPage logInPage() {
  return {"the name and secret of a reader are needed\n",
          401,
          plainText,
          {{"WWW-Authenticate", R"(Basic realm="collector", charset="UTF-8")"}}};
}

AdminPage withRetry(AdminPage page, std::chrono::seconds delay) {
  page.fields.emplace_back("Retry-After", std::to_string(delay.count()));
  return page;
}

}  // namespace

AdminConnection::AdminConnection(AdminService& service, asio::ip::tcp::socket socket)
    : service_(service),
      tcp_(std::move(socket)),
      peer_(peerOf(tcp_)),
      buffer_(service.limits.head) {
  service_.strangers.add(peer_.address());
}

AdminConnection::~AdminConnection() {
  if (isReader_) {
    --service_.readersNow;
  } else {
    service_.strangers.remove(peer_.address());
  }
}

asio::awaitable<void> AdminConnection::run() {
  tcp_.expires_after(service_.limits.headTime);
  char first = 0;
  co_await tcp_.async_read_some(asio::buffer(&first, 1), use_awaitable);
  if (first == firstByteOfTls && service_.readers) {
    co_await serveTls(first);
    co_return;
  }
  *static_cast<char*>(buffer_.prepare(1).data()) = first;
  buffer_.commit(1);
  co_await servePlain();
}

template <typename Stream>
asio::awaitable<AdminConnection::Request> AdminConnection::read(Stream& stream) {
  http::request_parser<http::empty_body> parser;
  parser.header_limit(service_.limits.head);
  parser.body_limit(std::numeric_limits<std::uint64_t>::max());  // no body is read
  co_await http::async_read_header(stream, buffer_, parser, use_awaitable);
  const bool hasBody = parser.chunked() || parser.content_length().value_or(0) > 0;
  Request request{parser.release(), hasBody, {}};
  const auto target = request.head.target();
  request.path.assign(target.data(), std::min(target.find('?'), target.size()));
  co_return request;
}

template <typename Stream>
asio::awaitable<void> AdminConnection::write(Stream& stream, AdminPage page, bool keepsConnection) {
  Response response;
  response.result(static_cast<unsigned>(page.status));
  response.set(http::field::content_type, page.type);
  if (stream_) {
    response.set("Content-Security-Policy", pagePolicy);
    response.set("X-Content-Type-Options", "nosniff");
    response.set("Referrer-Policy", "no-referrer");
    response.set(http::field::cache_control, "no-store");
  }
  for (const auto& [name, value] : page.fields) {
    response.set(name, value);
  }
  response.body() = std::move(page.text);
  response.keep_alive(keepsConnection);
  response.prepare_payload();
  tcp_.expires_after(service_.limits.answerTime);
  co_await http::async_write(stream, response, use_awaitable);
}

asio::awaitable<void> AdminConnection::servePlain() {
  const Request request = co_await read(tcp_);
  AdminPage page = service_.readers && service_.pages.count(request.path) == 0
                       ? AdminPage{"only HTTPS serves this\n", 403}
                       : operatorPage(request);
  co_await write(tcp_, std::move(page), false);
  tcp_.socket().shutdown(asio::ip::tcp::socket::shutdown_send);
}

/// One of the pages for operators, or the reason why there is none.
AdminPage AdminConnection::operatorPage(const Request& request) const {
  const auto page = service_.pages.find(request.path);
  if (page == service_.pages.end()) {
    return {"unknown path\n", 404};
  }
  if (request.head.method() != http::verb::get) {
    return onlyGet();
  }
  try {
    return page->second();
  } catch (const std::exception& error) {
    return {std::string(error.what()) + '\n', 500};
  }
}

asio::awaitable<void> AdminConnection::serveTls(char first) {
  const TlsContext context = service_.readers->tls.get();
  stream_.emplace(tcp_, *context);
  co_await stream_->async_handshake(asio::ssl::stream_base::server, asio::buffer(&first, 1),
                                    use_awaitable);
  while (co_await serveRequest()) {
    tcp_.expires_after(service_.limits.idleTime);
  }
  co_await close();
}

/// Returns whether the connection may carry another request.
asio::awaitable<bool> AdminConnection::serveRequest() {
  const Request request = co_await read(*stream_);
  tcp_.expires_never();
  AdminPage page = co_await answerTo(request);
  const bool isServed = page.status != 401 && page.status != 405;
  const bool keepsConnection =
      isReader_ && isServed && !request.hasBody && request.head.keep_alive();
  co_await write(*stream_, std::move(page), keepsConnection);
  co_return keepsConnection;
}

asio::awaitable<AdminPage> AdminConnection::answerTo(const Request& request) {
  if (request.head.method() != http::verb::get) {
    co_return onlyGet();
  }
  if (request.hasBody) {
    co_return AdminPage{"no body is accepted\n", 413};
  }
  if (service_.pages.count(request.path) > 0) {
    co_return operatorPage(request);
  }
  auto refusal = co_await identify(request);
  if (refusal) {
    co_return *std::move(refusal);
  }
  const auto target = request.head.target();
  co_return co_await fetch(*service_.readers->page, std::string(target));
}

/// Returns the refusal unless the credentials are accepted.
asio::awaitable<std::optional<AdminPage>> AdminConnection::identify(const Request& request) {
  const auto delay = service_.failedLogIns.delay(peer_.address(), steady_clock::now());
  if (delay > delay.zero()) {
    co_return withRetry({"too many failed log-ins\n", 429}, delay);
  }
  const auto given = request.head[http::field::authorization];
  if (given.empty()) {  // a browser's first request
    co_return logInPage();
  }
  std::string authorization(given.data(), given.size());
  std::string address = peer_.address().to_string();
  const auto identity =
      co_await service_.readers->logIn.check(std::move(authorization), std::move(address));
  if (!identity) {
    co_return withRetry({"too many log-ins at once\n", 503}, std::chrono::seconds(1));
  }
  if (!*identity) {
    service_.failedLogIns.add(peer_.address(), steady_clock::now());
    logCut("admin: unknown reader or wrong secret", textOf(peer_));
    co_return logInPage();
  }
  if (!becomeReader()) {
    co_return withRetry({"too many readers\n", 503}, std::chrono::seconds(1));
  }
  co_return std::nullopt;
}

/// Returns false if there are too many connections of readers.
bool AdminConnection::becomeReader() {
  if (isReader_) {
    return true;
  }
  if (service_.readersNow == service_.limits.readers) {
    return false;
  }
  isReader_ = true;
  service_.strangers.remove(peer_.address());
  ++service_.readersNow;
  return true;
}

asio::awaitable<void> AdminConnection::close() {
  tcp_.expires_after(closeTime);
  // The end is sent at once, without waiting for the client's.
  SSL_set_shutdown(stream_->native_handle(), SSL_RECEIVED_SHUTDOWN);
  co_await stream_->async_shutdown(use_awaitable);
  tcp_.socket().shutdown(asio::ip::tcp::socket::shutdown_send);
  // Unread bytes of a body would make the system reset the connection, and the answer be lost.
  std::array<char, 4096> discarded{};
  for (std::size_t left = mostDiscarded; left > 0;) {
    left -= std::min(left, co_await tcp_.async_read_some(asio::buffer(discarded), use_awaitable));
  }
}

}  // namespace qel::collector
