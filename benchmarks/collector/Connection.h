#pragma once

#include <chrono>
#include <optional>
#include <utility>

#include <boost/asio/awaitable.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>

#include "benchmarks/collector/Load.h"

namespace qel::benchmarks {

/// What happened to a request: the status, or the error if there was no answer.
struct Outcome {
  unsigned status = 0;
  std::string error;
};

/// A TLS connection of a client to the server. Not thread-safe.
class Connection {
 public:
  template <typename Result>
  using Task = boost::asio::awaitable<Result>;

  Connection(boost::asio::io_context& loop, boost::asio::ssl::context& tls,
             const LoadSettings& settings);

  bool isOpen() const { return stream_.has_value(); }
  void close() { stream_.reset(); }

  /// Connects unless the connection is open. Returns whether that succeeded.
  Task<bool> open();

  /// Sends a whole request, on a new connection unless one is open, and waits for the answer.
  /// Closes the connection if it cannot be used any more.
  Task<Outcome> exchange(const std::string& request);

  /// Reads until the server closes the connection, then closes it.
  Task<void> awaitEnd();

 private:
  using Stream = boost::asio::ssl::stream<boost::beast::tcp_stream>;

  boost::asio::io_context& loop_;
  boost::asio::ssl::context& tls_;
  const LoadSettings& settings_;
  std::optional<Stream> stream_;
  boost::beast::flat_buffer received_;
};

}  // namespace qel::benchmarks
