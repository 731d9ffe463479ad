#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace qel::collector {

inline constexpr const char* plainText = "text/plain; charset=utf-8";

/// An answer of the admin server.
struct AdminPage {
  std::string text;
  int status = 200;
  std::string type = plainText;
  /// Further header fields. They replace those that the server sets.
  std::vector<std::pair<std::string, std::string>> fields = {};
};

/// Functions that make the pages, by path. They are called on the server's thread.
using AdminPages = std::map<std::string, std::function<AdminPage()>, std::less<>>;

/// The pages for those who operate a collector:
/// - `/health`: 200 while the process can answer.
/// - `/ready`: 200, or 503 with the word that `obstacle` returns. An empty word means ready.
/// - `/metrics`: what `metrics` returns, for Prometheus.
AdminPages adminPages(std::function<std::string()> obstacle, std::function<std::string()> metrics);

}  // namespace qel::collector
