#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>

#include "host/QelDateTime/DateTime.h"

namespace qel::log::analytics::reports::details {

/// Memory readings in KB by the time they were taken.
using MemorySamples = std::map<qel::datetime::DateTime, unsigned long long>;

/// The readings since the last report, kept so that a crashing thread can read them without waiting
/// for anyone.
///
/// One thread at a time writes (the observer's mutex sees to that); any thread reads at any moment,
/// without a lock. A reader sees whole readings only: a slot is written before the count that
/// covers it is released, and it is not written again until `clear` has been called twice, which
/// the observer does a reporting interval apart but at its start and stop.
class CrashReadableSamples {
 public:
  /// A reporting interval brings about 31 readings. What does not fit is left out here.
  static constexpr std::size_t capacity = 128;

  /// Leaves the reading out when there is no room.
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

  /// A reader under way still sees the readings of before.
  void clear() {
    const auto other = 1 - current_.load(std::memory_order_relaxed);
    series_[other].count.store(0, std::memory_order_relaxed);
    current_.store(other, std::memory_order_release);
  }

  /// A copy of the readings since `clear`, of those with equal times the first. Allocates memory.
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
