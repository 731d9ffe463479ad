#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "tools/collector/PackageReader.h"
#include "tools/collector/Store.h"

namespace qel::collector {

/// Figures that are read when `/metrics` is asked for.
struct Gauges {
  std::size_t connections = 0;
  std::size_t queuedPackages = 0;
  std::uint64_t bytesInFlight = 0;
  StoreSize store;
  std::chrono::system_clock::time_point certificateEnd;
  std::uint64_t droppedLogMessages = 0;
};

/// Counts what the collector does, for Prometheus. Thread-safe.
class Metrics {
 public:
  /// Counts an answered request by its status, and the time from its head to its answer.
  void countAnswer(int status, std::chrono::steady_clock::duration time);

  /// Counts a durable package.
  void countStored(const Package& package, std::size_t bytes);

  /// All counters and these gauges in Prometheus' text format, version 0.0.4.
  /// https://prometheus.io/docs/instrumenting/exposition_formats/
  std::string text(const Gauges& gauges) const;
};

}  // namespace qel::collector
