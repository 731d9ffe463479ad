#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>

#include "host/QelDateTime/DateTime.h"

namespace qel::log::analytics::reports::details {

/// Memory readings in KB, keyed by time.
using MemorySamples = std::map<qel::datetime::DateTime, unsigned long long>;

/// The readings since the last report. A crashing thread can read them without waiting.
///
/// Writers must lock the observer's mutex. Any thread may read at any time without a lock. A reader
/// sees only complete readings, because a slot is written before the count that includes it is
/// stored with release order. A slot is overwritten only after two calls of `clear`. The observer
/// calls `clear` once per reporting interval, and also when it starts and stops.
class CrashReadableSamples {
 public:
  /// A reporting interval has about 31 readings. Readings beyond the capacity are dropped.
  static constexpr std::size_t capacity = 128;

  /// Adds a reading, or drops it if the capacity is reached.
  void add(qel::datetime::DateTime time, std::uint64_t kilobytes) {
    Series& series = series_[current_.load(std::memory_order_relaxed)];
    const auto count = series.count.load(std::memory_order_relaxed);
    if (count == capacity) {
      return;
    }
    series.slots[count].time.store(time.secondsSinceEpoch(), std::memory_order_relaxed);
    series.slots[count].kilobytes.store(kilobytes, std::memory_order_relaxed);
    series.count.store(count + 1, std::memory_order_release);
  }

  /// Discards all readings. A reader that is already running still sees them.
  void clear() {
    const auto other = 1 - current_.load(std::memory_order_relaxed);
    series_[other].count.store(0, std::memory_order_relaxed);
    current_.store(other, std::memory_order_release);
  }

  /// A copy of the readings since the last `clear`. Of readings with equal times, only the first is
  /// copied. Allocates memory.
  MemorySamples read() const {
    const Series& series = series_[current_.load(std::memory_order_acquire)];
    const auto count = series.count.load(std::memory_order_acquire);
    MemorySamples samples;
    for (std::size_t i = 0; i < count; ++i) {
      samples.emplace(series.slots[i].time.load(std::memory_order_relaxed),
                      series.slots[i].kilobytes.load(std::memory_order_relaxed));
    }
    return samples;
  }

 private:
  struct Slot {
    std::atomic<double> time;
    std::atomic<std::uint64_t> kilobytes;
  };
  struct Series {
    std::array<Slot, capacity> slots{};
    std::atomic<std::size_t> count{0};
  };

  std::array<Series, 2> series_;
  std::atomic<std::size_t> current_{0};
};

}  // namespace qel::log::analytics::reports::details
