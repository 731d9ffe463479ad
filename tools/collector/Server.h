#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tools/collector/Service.h"
#include "tools/common/Endpoint.h"

namespace qel::collector {

struct ServerSettings {
  tools::Endpoint listen;  ///< port 0: any free port
  /// Addresses of load balancers. A connection from one of them must begin with a PROXY header.
  std::vector<std::string> behind = {};
  Limits limits = {};
};

/// Receives packages over HTTPS (TLS 1.2 or newer) at `POST /authenticated/customer-care.php` and
/// has them stored.
///
/// **Answers.**
/// - 204: the whole package is on disk.
/// - 400: the request is malformed, or its body is incomplete.
/// - 401: the credentials are unknown.
/// - 404, 405: the path or the method is not served.
/// - 411: the length of the body is not given by one plain Content-Length.
/// - 413, 431: the body or the head is too large.
/// - 415: the body is not declared as uncompressed JSON.
/// - 429: the user has sent too much.
/// - 503: the package cannot be stored at present.
///
/// The server closes the connection after every answer except 204.
///
/// **Threads.** One loop for each processor. The operations are thread-safe, except `stop` and the
/// destructor.
class Server {
 public:
  /// Starts to listen and to serve. `writer` and `metrics` must outlive this object. Throws
  /// `qel::exception` if it cannot listen, and `tools::InputError` for invalid addresses.
  Server(const ServerSettings& settings, std::shared_ptr<Users> users, TlsContext tls,
         StoreWriter& writer, Metrics& metrics);
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  /// Calls `stop`.
  ~Server();

  std::uint16_t port() const;

  /// Replaces what later requests or connections use.
  /// @{
  void use(std::shared_ptr<Users> users);
  void use(TlsContext tls);
  /// @}

  std::size_t connections() const;
  std::uint64_t bytesInFlight() const;

  /// Accepts no more connections, and cuts those without a request. Returns when all requests in
  /// progress are answered.
  void stop();

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qel::collector
