#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "tools/common/Endpoint.h"

namespace qel::collector {

/// A page of the admin server.
struct AdminPage {
  std::string text;
  int status = 200;
  std::string type = "text/plain; charset=utf-8";
};

/// Functions that make the pages, by path. They are called on the server's thread.
using AdminPages = std::map<std::string, std::function<AdminPage()>, std::less<>>;

/// The pages of a collector:
/// - `/health`: 200 while the process can answer.
/// - `/ready`: 200, or 503 with the word that `obstacle` returns. An empty word means ready.
/// - `/metrics`: what `metrics` returns, for Prometheus.
AdminPages adminPages(std::function<std::string()> obstacle, std::function<std::string()> metrics);

/// Serves pages over plain HTTP to those who operate the collector. Every connection has one
/// request, and ends with the answer. Answers 404 to another path and 405 to another method than
/// GET.
///
/// **Limits.** 64 connections, 8 KiB for a head, 5 s for a connection. Beyond them, connections are
/// closed without an answer.
///
/// **Log.** Requests are not logged.
///
/// **Threads.** A thread of the server serves all connections. The destructor ends it, and waits
/// only for the page that is being made.
class AdminServer {
 public:
  /// Listens and serves. Throws `qel::exception` if it cannot listen.
  AdminServer(const tools::Endpoint& listen, AdminPages pages);
  ~AdminServer();

  /// Where it listens.
  tools::Endpoint endpoint() const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qel::collector
