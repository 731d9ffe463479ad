#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "tools/collector/Credentials.h"
#include "tools/collector/StoreWriter.h"
#include "tools/common/Endpoint.h"

namespace qel::collector {

struct ServerSettings {
  tools::Endpoint listen;             ///< port 0: any free port
  std::filesystem::path certificate;  ///< PEM, with its chain
  std::filesystem::path key;          ///< PEM, not encrypted
  /// Maximum body size in bytes. Far larger than any row a client can store, because a row that the
  /// server always rejects would block all later rows.
  std::size_t largestBody = std::size_t{64} * 1024 * 1024;
  /// The maximum number of requests that are served at the same time.
  std::size_t workers = 64;
};

/// Receives packages over HTTPS (TLS 1.2 or newer) at `POST /authenticated/customer-care.php` and
/// stores them.
///
/// **Answers.**
/// - 204: the whole package is on disk.
/// - 401: the credentials are unknown.
/// - 400: the body is incomplete.
/// - 411: the length of the body is not given by one plain Content-Length.
/// - 413: the body is too large.
/// - 415: the body is not declared as uncompressed JSON.
/// - 404, 405: the path or the method is not served.
/// - 503: the package cannot be stored at present.
///
/// The server closes the connection after every answer except 204.
///
/// **Log.** One line for every request. It contains no part of a body, user name or secret.
///
/// **Threads.** The constructor, `bind` and `run` must be called on one thread. `stop` is
/// thread-safe.
class Server {
 public:
  /// Throws `tools::InputError` if the certificate or the key cannot be used.
  Server(const ServerSettings& settings, Credentials credentials, StoreWriter& store);
  ~Server();

  /// Starts to listen and returns the port. Throws `qel::exception` if it cannot listen.
  int bind();

  /// Serves until `stop` has been called and all requests in progress are answered. Calls `ready`
  /// as soon as `stop` has an effect. Throws `qel::exception` if it cannot accept connections any
  /// more.
  void run(const std::function<void()>& ready);

  /// Makes `run` return. Does nothing before `run` has called `ready`.
  void stop();

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qel::collector
