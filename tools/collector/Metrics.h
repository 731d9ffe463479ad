#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "tools/collector/PackageReader.h"
#include "tools/collector/Store.h"
#include "tools/collector/StoreReader.h"

namespace qel::collector {

/// A figure of a collector, as Prometheus' text format defines it.
struct Metric {
  struct Sample {
    std::string suffix;  ///< of the name, for a part of a histogram
    std::string labels;  ///< such as `status="204"`
    std::variant<std::int64_t, double> value;
  };

  std::string name;
  std::string type;
  std::string help;
  std::vector<Sample> samples;
};

/// The metrics in Prometheus' text format, version 0.0.4.
/// https://prometheus.io/docs/instrumenting/exposition_formats/
std::string toText(const std::vector<Metric>& metrics);

/// The metrics with the columns of the figure "system".
ResultTable toTable(const std::vector<Metric>& metrics);

/// Figures that are read when the metrics are asked for.
struct Gauges {
  bool isReady = false;
  std::size_t connections = 0;
  std::size_t queuedPackages = 0;
  std::uint64_t bytesInFlight = 0;
  StoreSize store;
  std::chrono::system_clock::time_point certificateEnd;
  std::uint64_t droppedLogMessages = 0;
};

/// Counts what the collector does. Thread-safe.
class Metrics {
 public:
  /// Counts an answered request by its status, and the time from its head to its answer.
  void countAnswer(int status, std::chrono::steady_clock::duration time);

  /// Counts a durable package.
  void countStored(const Package& package, std::size_t bytes);

  /// All counters and these gauges.
  std::vector<Metric> all(const Gauges& gauges) const;

  /// The statuses that are counted. The last counter is for all others.
  static constexpr std::array statuses{204, 400, 401, 404, 405, 411, 413, 415, 429, 431, 503};
  /// The upper limits of the histogram, in seconds. The last counter is for longer times.
  static constexpr std::array limits{0.005, 0.01, 0.025, 0.05, 0.1, 0.25, 0.5, 1.0, 2.5, 5.0, 10.0};

 private:
  using Counter = std::atomic<std::uint64_t>;

  Metric answers() const;
  Metric times() const;

  std::array<Counter, statuses.size() + 1> answers_{};
  std::array<Counter, limits.size() + 1> times_{};
  Counter nanoseconds_ = 0;
  Counter packages_ = 0;
  Counter events_ = 0;
  Counter environments_ = 0;
  Counter refused_ = 0;
  Counter bytes_ = 0;
};

}  // namespace qel::collector
