#include "tools/collector/Connection.h"

#include <algorithm>
#include <array>
#include <exception>
#include <string_view>

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/http/write.hpp>

#include "host/QelUtilities/ScopeGuard.h"
#include "tools/collector/ProxyHeader.h"

namespace qel::collector {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;

using asio::use_awaitable;
using boost::system::error_code;
using boost::system::system_error;
using std::chrono::steady_clock;

constexpr std::size_t readSize = std::size_t{16} << 10;  ///< the largest record of TLS

Answer tooManyBytes() { return {503, "too many bytes at once"}; }

asio::awaitable<std::shared_ptr<const Upload>> parse(std::string body, std::string user) {
  co_return std::make_shared<const Upload>(std::move(body), std::move(user));
}

/// Throws the writer's exception if the upload is not stored.
asio::awaitable<void> storeUpload(StoreWriter& writer, std::shared_ptr<const Upload> upload) {
  return asio::async_initiate<const asio::use_awaitable_t<>, void(std::exception_ptr)>(
      [&writer](auto handler, const std::shared_ptr<const Upload>& uploadToStore) {
        // The writer copies functions, but the handler can only be moved.
        auto shared = std::make_shared<decltype(handler)>(std::move(handler));
        writer.add(uploadToStore, [shared](std::exception_ptr failure) mutable {
          auto executor = asio::get_associated_executor(*shared);
          // Moved, so that the handler is destroyed on the connection's thread.
          asio::post(executor, [own = std::move(shared), failure] { (*own)(failure); });
        });
      },
      use_awaitable, std::move(upload));
}

}  // namespace

Connection::Connection(Service& service, asio::ip::tcp::socket socket, std::string peer,
                       bool isBehindProxy)
    : service_(service),
      isBehindProxy_(isBehindProxy),
      tls_(service.tls.get()),
      peer_(std::move(peer)),
      tcp_(std::move(socket)),
      work_(tcp_.get_executor()) {}

asio::awaitable<void> Connection::run() {
  try {
    tcp_.expires_after(service_.limits.headTime);
    if (isBehindProxy_) {
      co_await readClient();
    }
    co_await shakeHands();
    while (co_await serveRequest()) {
    }
    co_await close();
  } catch (const system_error& error) {
    logEnd(error.code());
  }
}

void Connection::stop() {
  isStopped_ = true;
  if (phase_ != Phase::Request) {
    tcp_.close();
  }
}

bool Connection::isStranger() const {
  return !isKnown_ && phase_ != Phase::Request && phase_ != Phase::Closing;
}

void Connection::cut() {
  phase_ = Phase::Closing;
  tcp_.close();
}

void Connection::logEnd(const error_code& error) const {
  const bool isIdle = phase_ == Phase::Idle && buffer_.empty();
  if (phase_ == Phase::Closing) {
    // The line for the end was written before.
  } else if (isStopped_) {
    logCut("cut: the server stops", peer_);
  } else if (error == beast::error::timeout && !isIdle) {
    logCut("cut: its time is over", peer_);
  } else if (phase_ == Phase::Handshake) {
    const bool hasReason = error.category() == asio::error::get_ssl_category();
    logCut("no TLS connection: " + (hasReason ? error.message() : "it broke off"), peer_);
  }
}

asio::awaitable<void> Connection::readClient() {
  const auto client = co_await readProxyHeader(tcp_);
  if (!client) {
    logCut("cut: no PROXY header", peer_);
    cut();
    throw system_error(asio::error::invalid_argument);
  }
  if (!client->empty()) {
    peer_ = *client;
  }
}

/// Makes the TLS stream only when a byte has arrived, because it needs most of the memory.
asio::awaitable<void> Connection::shakeHands() {
  char first = 0;
  co_await tcp_.async_read_some(asio::buffer(&first, 1), use_awaitable);
  stream_.emplace(tcp_, *tls_);
  co_await stream_->async_handshake(asio::ssl::stream_base::server, asio::buffer(&first, 1),
                                    use_awaitable);
  phase_ = Phase::Head;
}

/// Returns whether the connection may carry another request.
asio::awaitable<bool> Connection::serveRequest() {
  error_code error;
  const std::size_t size =
      co_await asio::async_read_until(*stream_, asio::dynamic_buffer(buffer_, service_.limits.head),
                                      "\r\n\r\n", asio::redirect_error(use_awaitable, error));
  if (error && error != asio::error::not_found) {
    throw system_error(error);
  }
  phase_ = Phase::Request;
  begin_ = steady_clock::now();
  Answer answer{431, "head too large"};
  bool keepsConnection = false;
  if (!error) {
    auto head = parseHead(std::string_view(buffer_).substr(0, size));
    buffer_.erase(0, size);
    if (auto* const refusal = std::get_if<Answer>(&head)) {
      answer = std::move(*refusal);
    } else {
      keepsConnection = std::get<RequestHead>(head).keepsConnection;
      answer = co_await answerTo(std::get<RequestHead>(std::move(head)));
    }
  }
  keepsConnection = keepsConnection && answer.status == 204 && !service_.isStopping;
  co_await give(answer, keepsConnection);
  phase_ = Phase::Idle;
  tcp_.expires_after(service_.limits.headTime);
  co_return keepsConnection;
}

asio::awaitable<Answer> Connection::answerTo(RequestHead head) {
  auto refusal = objectionToTarget(head);
  if (!refusal) {
    refusal = co_await identify(head.authorization);
  }
  if (!refusal) {
    refusal = objectionToBody(head, service_.limits.body);
  }
  if (refusal) {
    co_return *refusal;
  }
  const auto wait = service_.logIn.users.get()->admit(user_, steady_clock::now());
  if (wait > wait.zero()) {
    co_return Answer{429, "too many requests of this user", wait};
  }
  if (!service_.reserve(*head.length)) {
    co_return tooManyBytes();
  }
  const ScopeGuard release([&] { service_.release(*head.length); });
  std::string body;
  const bool isWhole = co_await readBody(head, body);
  service_.logIn.users.get()->charge(user_, body.size(), steady_clock::now());
  if (!isWhole) {
    co_return Answer{400, "the body broke off"};
  }
  co_return co_await store(std::move(body));
}

/// Sets the user, or returns the refusal.
asio::awaitable<std::optional<Answer>> Connection::identify(const std::string& authorization) {
  std::string address = peer_.substr(0, peer_.rfind(':'));
  const auto identity = co_await service_.logIn.check(authorization, std::move(address));
  if (!identity) {
    co_return Answer{503, "too many secrets to check"};
  }
  if (!*identity) {
    co_return Answer{401, "unknown user or wrong secret"};
  }
  isKnown_ = true;
  user_ = **identity;
  co_return std::nullopt;
}

/// Returns false if the client ended the connection.
asio::awaitable<bool> Connection::readBody(const RequestHead& head, std::string& body) {
  tcp_.expires_after(service_.limits.progressTime);
  if (head.awaitsContinue) {
    constexpr std::string_view goOn = "HTTP/1.1 100 Continue\r\n\r\n";
    co_await asio::async_write(*stream_, asio::buffer(goOn), use_awaitable);
  }
  const std::size_t size = *head.length;
  body.reserve(size);
  body.assign(buffer_, 0, size);
  buffer_.erase(0, size);
  std::size_t mark = body.size() + service_.limits.progress;
  while (body.size() < size) {
    const std::size_t have = body.size();
    body.resize(std::min(size, have + readSize));
    error_code error;
    const std::size_t read =
        co_await stream_->async_read_some(asio::buffer(body.data() + have, body.size() - have),
                                          asio::redirect_error(use_awaitable, error));
    body.resize(have + read);
    if (error == beast::error::timeout) {
      phase_ = Phase::Head;
      throw system_error(error);
    }
    if (error) {
      co_return false;
    }
    if (body.size() >= mark) {
      mark = body.size() + service_.limits.progress;
      tcp_.expires_after(service_.limits.progressTime);
    }
  }
  tcp_.expires_never();
  co_return true;
}

asio::awaitable<Answer> Connection::store(std::string body) {
  try {
    const std::size_t rows = memoryOfRows(body);
    if (!service_.reserve(rows)) {
      co_return tooManyBytes();
    }
    const ScopeGuard release([&] { service_.release(rows); });
    auto& parsers =
        body.size() > service_.limits.largeBody ? service_.largeParser : service_.parsers;
    auto parsing = parse(std::move(body), user_);
    const auto upload =
        co_await asio::co_spawn(parsers.get_executor(), std::move(parsing), use_awaitable);
    co_await storeUpload(service_.writer, upload);
    service_.metrics.countStored(upload->package, upload->body.size());
    co_return storedAnswer(upload->package);
  } catch (const std::exception& error) {
    co_return Answer{503, error.what()};
  }
}

asio::awaitable<void> Connection::give(const Answer& answer, bool keepsConnection) {
  const auto duration = steady_clock::now() - begin_;
  logAnswer(answer, peer_, duration);
  service_.metrics.countAnswer(answer.status, duration);
  Response response = toResponse(answer, keepsConnection);
  tcp_.expires_after(service_.limits.answerTime);
  co_await beast::http::async_write(*stream_, response, use_awaitable);
}

asio::awaitable<void> Connection::close() {
  phase_ = Phase::Closing;
  // The end is sent at once, without waiting for the client's.
  SSL_set_shutdown(stream_->native_handle(), SSL_RECEIVED_SHUTDOWN);
  co_await stream_->async_shutdown(use_awaitable);
  tcp_.socket().shutdown(asio::ip::tcp::socket::shutdown_send);
  buffer_.clear();
  std::array<char, 4096> discarded{};
  tcp_.expires_after(service_.isStopping ? std::chrono::seconds(1) : service_.limits.lingerTime);
  for (std::size_t left = service_.limits.body + service_.limits.head; left > 0;) {
    left -= std::min(left, co_await tcp_.async_read_some(asio::buffer(discarded), use_awaitable));
  }
}

}  // namespace qel::collector
