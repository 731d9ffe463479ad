#include "tools/collector/Metrics.h"

#include <algorithm>
#include <sstream>
#include <string_view>

namespace qel::collector {
namespace {

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

class Writer {
 public:
  Writer() { text_.precision(15); }

  /// Begins a metric. The samples follow.
  void begin(std::string_view name, std::string_view type, std::string_view help) {
    name_ = "qel_collector_" + std::string(name);
    text_ << "# HELP " << name_ << ' ' << help << "\n# TYPE " << name_ << ' ' << type << '\n';
  }

  template <typename Value>
  void sample(std::string_view labels, const Value& value) {
    text_ << name_ << labels << ' ' << value << '\n';
  }

  /// A metric with one sample.
  template <typename Value>
  void single(std::string_view name, std::string_view type, std::string_view help,
              const Value& value) {
    begin(name, type, help);
    sample("", value);
  }

  /// A sample that has this label, too.
  template <typename Label, typename Value>
  void labelled(std::string_view suffix, std::string_view name, const Label& label,
                const Value& value) {
    text_ << name_ << suffix << '{' << name << "=\"" << label << "\"} " << value << '\n';
  }

  std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
  std::string name_;
};

void writeGauges(Writer& out, const Gauges& gauges) {
  out.single("connections", "gauge", "Open connections.", gauges.connections);
  out.single("queued_packages", "gauge", "Packages that wait for the store.",
             gauges.queuedPackages);
  out.single("in_flight_bytes", "gauge", "Memory of bodies that are received or stored.",
             gauges.bytesInFlight);
  out.single("store_bytes", "gauge", "Size of the store without its log.", gauges.store.file);
  out.single("store_log_bytes", "gauge", "Size of the store's write-ahead log.", gauges.store.log);
  out.single(
      "certificate_end_timestamp_seconds", "gauge",
      "When the certificate expires, in seconds since 1970.",
      std::chrono::duration_cast<std::chrono::seconds>(gauges.certificateEnd.time_since_epoch())
          .count());
  out.single("log_messages_dropped_total", "counter",
             "Log messages that were dropped because the log was not written fast enough.",
             gauges.droppedLogMessages);
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

std::string Metrics::text(const Gauges& gauges) const {
  Writer out;
  out.single("packages_total", "counter", "Stored packages.", packages_);
  out.begin("rows_total", "counter", "Rows of stored packages, repeated ones included.");
  out.labelled("", "kind", "event", events_);
  out.labelled("", "kind", "environment", environments_);
  out.single("refused_texts_total", "counter", "Stored texts that could not be parsed.", refused_);
  out.single("package_bytes_total", "counter", "Size of the bodies of stored packages.", bytes_);
  out.begin("answers_total", "counter", "Answered requests.");
  for (std::size_t i = 0; i < statuses.size(); ++i) {
    out.labelled("", "status", statuses[i], answers_[i]);
  }
  out.labelled("", "status", "other", answers_.back());
  out.begin("answer_seconds", "histogram", "Time from the head of a request to its answer.");
  std::uint64_t count = 0;
  for (std::size_t i = 0; i < limits.size(); ++i) {
    out.labelled("_bucket", "le", limits[i], count += times_[i]);
  }
  count += times_.back();
  out.labelled("_bucket", "le", "+Inf", count);
  out.sample("_sum", static_cast<double>(nanoseconds_) / 1e9);
  out.sample("_count", count);
  writeGauges(out, gauges);
  return out.text();
}

}  // namespace qel::collector
