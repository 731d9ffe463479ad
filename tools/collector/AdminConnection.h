#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include <boost/asio/awaitable.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>

#include "tools/collector/AdminService.h"

namespace qel::collector {

/// One connection to the admin server. A first byte of 0x16 begins TLS, any other byte plain HTTP.
///
/// **Plain HTTP** serves one request for one of the operator's pages.
///
/// **TLS** serves the operator's pages to everybody, and the reader's page to those whose
/// credentials are accepted. After an answer to a reader the connection may carry another request.
///
/// **Log.** One line for each failed log-in.
///
/// **Threads.** Used only on the server's thread.
class AdminConnection {
 public:
  /// `service` must outlive this object.
  AdminConnection(AdminService& service, boost::asio::ip::tcp::socket socket);
  AdminConnection(const AdminConnection&) = delete;
  AdminConnection& operator=(const AdminConnection&) = delete;
  ~AdminConnection();

  /// Serves the connection. Throws `boost::system::system_error` if it breaks off or takes too
  /// long. Must be called once.
  boost::asio::awaitable<void> run();

 private:
  template <typename Result = void>
  using Awaitable = boost::asio::awaitable<Result>;
  using Response = boost::beast::http::response<boost::beast::http::string_body>;

  struct Request {
    boost::beast::http::request<boost::beast::http::empty_body> head;
    bool hasBody = false;
    std::string path;  ///< without the query
  };

  template <typename Stream>
  Awaitable<Request> read(Stream& stream);
  template <typename Stream>
  Awaitable<> write(Stream& stream, AdminPage page, bool keepsConnection);

  Awaitable<> servePlain();
  Awaitable<> serveTls(char first);
  Awaitable<bool> serveRequest();
  Awaitable<AdminPage> answerTo(const Request& request);
  Awaitable<std::optional<AdminPage>> identify(const Request& request);
  Awaitable<> close();
  AdminPage operatorPage(const Request& request) const;
  bool becomeReader();

  AdminService& service_;
  boost::beast::tcp_stream tcp_;
  const boost::asio::ip::tcp::endpoint peer_;
  std::optional<boost::asio::ssl::stream<boost::beast::tcp_stream&>> stream_;
  boost::beast::flat_buffer buffer_;  ///< received, not yet used
  bool isReader_ = false;             ///< whether credentials were accepted
};

}  // namespace qel::collector
