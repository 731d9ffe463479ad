#include "tools/collector/Metrics.h"

#include <algorithm>
#include <sstream>
#include <string_view>
#include <type_traits>

namespace qel::collector {
namespace {

std::string fullNameOf(const Metric& metric) { return "qel_collector_" + metric.name; }

/// Adds without an order among counters, which is the cheapest way.
void add(std::atomic<std::uint64_t>& counter, std::uint64_t amount) {
  counter.fetch_add(amount, std::memory_order_relaxed);
}

template <typename Texts>
std::size_t total(const Texts& texts) {
  std::size_t sum = 0;
  for (const auto& text : texts) {
    sum += text.count;
  }
  return sum;
}

template <typename Value>
std::variant<std::int64_t, double> valueOf(Value value) {
  if constexpr (std::is_floating_point_v<Value>) {
    return value;
  } else {
    return static_cast<std::int64_t>(value);
  }
}

template <typename Value>
Metric::Sample labelled(const char* suffix, std::string_view name, const Value& label,
                        std::uint64_t value) {
  std::ostringstream labels;
  labels << name << "=\"" << label << '"';
  return {suffix, labels.str(), valueOf(value)};
}

/// A metric with one sample.
template <typename Value>
Metric single(const char* name, const char* type, const char* help, Value value) {
  return {name, type, help, {{"", "", valueOf(value)}}};
}

std::vector<Metric> metricsOf(const Gauges& gauges) {
  const auto certificateEnd =
      std::chrono::duration_cast<std::chrono::seconds>(gauges.certificateEnd.time_since_epoch());
  return {
      single("ready", "gauge", "Whether packages are taken: 1 while /ready answers 200, else 0.",
             gauges.isReady),
      single("connections", "gauge", "Open connections.", gauges.connections),
      single("queued_packages", "gauge", "Packages that wait for the store.",
             gauges.queuedPackages),
      single("in_flight_bytes", "gauge", "Memory of bodies that are received or stored.",
             gauges.bytesInFlight),
      single("store_bytes", "gauge", "Size of the store without its log.", gauges.store.file),
      single("store_log_bytes", "gauge", "Size of the store's write-ahead log.", gauges.store.log),
      single("certificate_end_timestamp_seconds", "gauge",
             "When the certificate expires, in seconds since 1970.", certificateEnd.count()),
      single("log_messages_dropped_total", "counter",
             "Log messages that were dropped because the log was not written fast enough.",
             gauges.droppedLogMessages),
  };
}

}  // namespace

void Metrics::countAnswer(int status, std::chrono::steady_clock::duration time) {
  const auto* const known = std::find(statuses.begin(), statuses.end(), status);
  add(answers_[static_cast<std::size_t>(known - statuses.begin())], 1);
  const double seconds = std::chrono::duration<double>(time).count();
  const auto* const limit = std::lower_bound(limits.begin(), limits.end(), seconds);
  add(times_[static_cast<std::size_t>(limit - limits.begin())], 1);
  add(nanoseconds_, static_cast<std::uint64_t>(std::chrono::nanoseconds(time).count()));
}

void Metrics::countStored(const Package& package, std::size_t bytes) {
  add(packages_, 1);
  add(events_, total(package.events));
  add(environments_, total(package.environments));
  add(refused_, total(package.refused));
  add(bytes_, bytes);
}

std::vector<Metric> Metrics::all(const Gauges& gauges) const {
  std::vector<Metric> metrics{
      single("packages_total", "counter", "Stored packages.", packages_.load()),
      {"rows_total",
       "counter",
       "Rows of stored packages, repeated ones included.",
       {labelled("", "kind", "event", events_),
        labelled("", "kind", "environment", environments_)}},
      single("refused_texts_total", "counter", "Stored texts that could not be parsed.",
             refused_.load()),
      single("package_bytes_total", "counter", "Size of the bodies of stored packages.",
             bytes_.load()),
      answers(),
      times()};
  const auto others = metricsOf(gauges);
  metrics.insert(metrics.end(), others.begin(), others.end());
  return metrics;
}

Metric Metrics::answers() const {
  Metric metric{"answers_total", "counter", "Answered requests.", {}};
  for (std::size_t i = 0; i < statuses.size(); ++i) {
    metric.samples.push_back(labelled("", "status", statuses[i], answers_[i]));
  }
  metric.samples.push_back(labelled("", "status", "other", answers_.back()));
  return metric;
}

Metric Metrics::times() const {
  Metric metric{
      "answer_seconds", "histogram", "Time from the head of a request to its answer.", {}};
  std::uint64_t count = 0;
  for (std::size_t i = 0; i < limits.size(); ++i) {
    metric.samples.push_back(labelled("_bucket", "le", limits[i], count += times_[i]));
  }
  count += times_.back();
  metric.samples.push_back(labelled("_bucket", "le", "+Inf", count));
  metric.samples.push_back({"_sum", "", static_cast<double>(nanoseconds_) / 1e9});
  metric.samples.push_back({"_count", "", valueOf(count)});
  return metric;
}

std::string toText(const std::vector<Metric>& metrics) {
  std::ostringstream text;
  text.precision(15);
  for (const Metric& metric : metrics) {
    const std::string name = fullNameOf(metric);
    text << "# HELP " << name << ' ' << metric.help << "\n# TYPE " << name << ' ' << metric.type
         << '\n';
    for (const auto& [suffix, labels, value] : metric.samples) {
      text << name << suffix << (labels.empty() ? "" : '{' + labels + '}') << ' ';
      std::visit([&](auto number) { text << number << '\n'; }, value);
    }
  }
  return text.str();
}

ResultTable toTable(const std::vector<Metric>& metrics) {
  ResultTable table{{"name", "labels", "value"}, {}, {}};
  for (const Metric& metric : metrics) {
    for (const auto& [suffix, labels, value] : metric.samples) {
      const Cell cell = std::visit([](auto number) { return Cell(number); }, value);
      table.rows.push_back({fullNameOf(metric) + suffix, labels, cell});
    }
  }
  return table;
}

}  // namespace qel::collector
