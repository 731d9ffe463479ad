#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "tools/collector/Credentials.h"
#include "tools/collector/Store.h"
#include "tools/common/Endpoint.h"

namespace qel::collector {

struct ServerSettings {
  tools::Endpoint listen;             ///< port 0: any free one
  std::filesystem::path certificate;  ///< PEM, followed by its chain
  std::filesystem::path key;          ///< PEM, not encrypted
  /// In bytes. Far above the largest row that a client can store: a row that is never accepted
  /// would block all later rows.
  std::size_t largestBody = std::size_t{64} * 1024 * 1024;
  /// The largest number of requests that are served at once.
  std::size_t workers = 64;
};

/// Receives packages over HTTPS (TLS 1.2 or newer) at `POST /authenticated/customer-care.php` and
/// stores them.
///
/// **Answers.**
/// - 204: the whole package is on the disk.
/// - 401: the credentials are unknown.
/// - 400, 411, 413, 415: the body breaks off, has no plain length, is too large, is not plain JSON.
/// - 404, 405: another path or method.
/// - 503: the store accepts nothing at present.
///
/// The connection ends after every answer except 204.
///
/// **Log.** One line for every request, without anything of body, name or secret.
///
/// **Threads.** One thread constructs, binds and runs. Any thread may call `stop`.
class Server {
 public:
  /// Throws `tools::InputError` for a certificate or key that cannot be used.
  Server(const ServerSettings& settings, Credentials credentials, Store& store);
  ~Server();

  /// Begins to listen; returns the port. Throws `qel::exception`.
  int bind();

  /// Serves until `stop` is called and the requests under way are answered. Calls `ready` as soon
  /// as `stop` works. Throws `qel::exception` if it cannot go on.
  void run(const std::function<void()>& ready);

  /// Ends `run`. Does nothing before `run` has called `ready`.
  void stop();

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qel::collector
