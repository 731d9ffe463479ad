#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/common/Endpoint.h"

namespace qel::benchmarks {

struct LoadSettings {
  tools::Endpoint server;
  std::string host;  ///< the name in the server's certificate
  std::string user;
  std::string secret;
  std::size_t users = 0;  ///< if not zero: clients take turns with USER0, USER1 and so on
  std::size_t connections = 0;
  std::size_t rows = 1;         ///< of a package
  std::size_t earlierRows = 0;  ///< the days continue after those of so many rows
  std::chrono::duration<double> duration{10};
  /// Each client sends a package per interval, whether or not earlier packages were fast. Without
  /// an interval it sends the next package after the answer to the previous one.
  std::optional<std::chrono::duration<double>> interval;
  bool fresh = false;                       ///< a new connection for each package
  bool resend = false;                      ///< a package is sent until it is stored
  std::chrono::duration<double> warmUp{0};  ///< packages that begin earlier do not count
  std::chrono::seconds patience{30};        ///< the longest time of one package
};

struct LoadResult {
  std::uint64_t stored = 0;          ///< packages with a status of 2xx, also during the warm-up
  std::uint64_t answeredInTime = 0;  ///< those that were answered during `duration`
  std::uint64_t bytesInTime = 0;     ///< of their bodies
  std::vector<float> milliseconds;   ///< for each package that counts
  std::map<std::string, std::uint64_t> failures;  ///< by status or error
};

/// Sends packages over TLS from one thread. A package that meets the end of an idle connection is
/// sent once more. The time of a package runs from the moment when it is due.
LoadResult load(const LoadSettings& settings);

/// Keeps `connections` TLS connections on which nothing is sent, and opens those again that the
/// server closes. Prints how many are open once a second. Returns after `duration`.
void keepSilent(const LoadSettings& settings);

}  // namespace qel::benchmarks
