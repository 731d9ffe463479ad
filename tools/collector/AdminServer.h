#pragma once

#include <memory>

#include "tools/collector/AdminService.h"
#include "tools/common/Endpoint.h"

namespace qel::collector {

/// Serves pages to those who operate the collector, and the page for readers.
///
/// **Plain HTTP** serves only `pages`. Every connection has one request, and ends with the answer.
/// Answers 404 to another path (403 if there are readers), and 405 to another method than GET.
///
/// **HTTPS** is served on the same port if there are readers. `pages` are served to everybody, the
/// rest to readers: 401 without their credentials, 429 after ten failed log-ins of an address in a
/// minute, 413 to a request with a body.
///
/// **Limits** are those of `AdminLimits` and `Strangers`. Beyond them, connections are closed
/// without an answer, or readers get 503.
///
/// **Log.** Requests are not logged, failed log-ins are.
///
/// **Threads.** A thread of the server serves all connections. It never waits for the store. The
/// destructor ends it, interrupts a question to the store, and waits only for the page that is
/// being made.
class AdminServer {
 public:
  /// Listens and serves. `readers` may be null. Throws `qel::exception` if it cannot listen.
  AdminServer(const tools::Endpoint& listen, AdminPages pages,
              std::unique_ptr<ReaderAccess> readers = nullptr);
  ~AdminServer();

  /// Where it listens.
  tools::Endpoint endpoint() const;

  /// Replaces what later requests or connections use. Without readers, they have no effect.
  /// Thread-safe.
  /// @{
  void use(std::shared_ptr<Users> readers);
  void use(TlsContext tls);
  /// @}

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qel::collector
