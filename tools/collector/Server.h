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
  std::filesystem::path certificate;  ///< PEM, with the chain behind it
  std::filesystem::path key;          ///< PEM, not encrypted
  /// Well above the largest row that a client can store, since a row that is never taken would hold
  /// up all behind it.
  std::size_t largestBody = std::size_t{64} * 1024 * 1024;
  /// Requests that are served at the same time.
  std::size_t workers = 64;
};

/// Takes packages over HTTPS (TLS 1.2 or newer) at `POST /authenticated/customer-care.php` into a
/// store. It answers
///
/// - 204 once the whole package is on the disk,
/// - 401 without credentials that it knows, 413 for a body that is too large, 415 for one that is
///   not plain JSON, 411 for one that does not tell its length, 400 for one that breaks off, 404
///   and 405 for anything else,
/// - 503 while the store takes nothing,
///
/// ends the connection after every answer but 204, and writes a line for every request to standard
/// error that holds nothing of body, name or secret. Constructed, bound, run; `stop` from any
/// thread.
class Server {
 public:
  /// Throws `tools::InputError` for a certificate or key that cannot be used.
  Server(const ServerSettings& settings, Credentials credentials, Store& store);
  ~Server();

  /// Begins to listen; returns the port. Throws `qel::exception`.
  int bind();

  /// Serves until `stop` is called and the requests under way then are answered. Calls `ready` as
  /// soon as `stop` works. Throws `qel::exception` when it cannot go on.
  void run(const std::function<void()>& ready);

  /// Does nothing before `run` has called `ready`.
  void stop();

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qel::collector
