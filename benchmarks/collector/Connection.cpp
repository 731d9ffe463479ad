#include "benchmarks/collector/Connection.h"

#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http.hpp>
#include <openssl/ssl.h>

namespace qel::benchmarks {
namespace {

namespace asio = boost::asio;
namespace http = boost::beast::http;
using boost::system::error_code;

auto into(error_code& error) { return asio::redirect_error(asio::use_awaitable, error); }

}  // namespace

Connection::Connection(asio::io_context& loop, asio::ssl::context& tls,
                       const LoadSettings& settings)
    : loop_(loop), tls_(tls), settings_(settings) {}

Connection::Task<bool> Connection::open() {
  if (stream_) {
    co_return true;
  }
  const asio::ip::tcp::endpoint server(asio::ip::make_address(settings_.server.host),
                                       settings_.server.port);
  stream_.emplace(loop_, tls_);
  received_.clear();
  error_code error;
  boost::beast::get_lowest_layer(*stream_).expires_after(settings_.patience);
  co_await boost::beast::get_lowest_layer(*stream_).async_connect(server, into(error));
  if (!error) {
    boost::beast::get_lowest_layer(*stream_).socket().set_option(asio::ip::tcp::no_delay(true));
    SSL_set_tlsext_host_name(stream_->native_handle(), settings_.host.c_str());
    co_await stream_->async_handshake(asio::ssl::stream_base::client, into(error));
  }
  if (error) {
    close();
  }
  co_return !error;
}

Connection::Task<Outcome> Connection::exchange(const std::string& request) {
  Outcome outcome;
  const bool opened = co_await open();
  if (!opened) {
    outcome.error = "no connection";
    co_return outcome;
  }
  boost::beast::get_lowest_layer(*stream_).expires_after(settings_.patience);
  error_code sent;
  co_await asio::async_write(*stream_, asio::buffer(request), into(sent));
  // The server may have answered and closed before it read the whole request.
  http::response_parser<http::string_body> answer;
  error_code error;
  co_await http::async_read(*stream_, received_, answer, into(error));
  if (error) {
    outcome.error = error == boost::beast::error::timeout ? "timeout" : "no answer";
  } else {
    outcome.status = answer.get().result_int();
  }
  if (error || sent || !answer.keep_alive()) {
    close();
  }
  co_return outcome;
}

Connection::Task<void> Connection::awaitEnd() {
  boost::beast::get_lowest_layer(*stream_).expires_never();
  char byte = 0;
  error_code error;
  co_await stream_->async_read_some(asio::buffer(&byte, 1), into(error));
  close();
}

}  // namespace qel::benchmarks
