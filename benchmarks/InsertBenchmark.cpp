#include <algorithm>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Application/Log/Analytics/Database/AccumulatingDispatcher.h"
#include "benchmarks/Insertion.h"
#include "benchmarks/Timing.h"
#include "benchmarks/Workload.h"

namespace qel::benchmarks {
namespace {

using log::analytics::AccumulatingDispatcher;
using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

constexpr auto Items = log::analytics::CipDatabaseClientInterface::Items;
constexpr std::chrono::duration<double> period{1.0};

void insert(benchmark::State& state) {
  for (auto _ : state) {
    runInsertions(insertionsOfBatch,
                  [&](const auto& addAll) { measure(state, addAll, insertionsOfBatch); });
  }
}
BENCHMARK(insert)->Name("insert/ours")->Iterations(100)->UseManualTime();

/// Builds the same strings and map, and moves them into a preallocated vector under a mutex.
void insertLimit(benchmark::State& state) {
  struct Record {
    std::string command;
    log::analytics::items::CommandItem::State state;
    Details details;
  };
  for (auto _ : state) {
    std::mutex mutex;
    std::vector<Record> records;
    records.reserve(insertionsOfBatch);
    const auto addAll = [&] {
      for (int number = 0; number < insertionsOfBatch; ++number) {
        Record record{commandText(), log::analytics::items::CommandItem::State::Started,
                      commandDetails(number)};
        const std::lock_guard lock(mutex);
        records.push_back(std::move(record));
      }
      benchmark::DoNotOptimize(records.data());
      benchmark::ClobberMemory();
    };
    measure(state, addAll, insertionsOfBatch);
  }
}
BENCHMARK(insertLimit)->Name("insert/limit")->Iterations(100)->UseManualTime();

/// Builds and adds an item every `interval`, and returns the duration of each addition in
/// microseconds.
std::vector<double> latencies(AccumulatingDispatcher& dispatcher, int count,
                              microseconds interval) {
  std::vector<double> times;
  times.reserve(static_cast<std::size_t>(count));
  const auto start = Clock::now();
  for (int number = 0; number < count; ++number) {
    std::this_thread::sleep_until(start + number * interval);
    const auto begin = Clock::now();
    dispatcher.add(makeItem(number), Items);
    times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - begin).count());
  }
  return times;
}

/// Four threads each add 20,000 items per second for two seconds, while the worker renders them.
void insertContended(benchmark::State& state) {
  constexpr int threadCount = 4;
  constexpr int addsOfEach = 40'000;
  constexpr microseconds interval{50};
  identifyProcess();
  for (auto _ : state) {
    AccumulatingDispatcher dispatcher(
        [](const auto& batch) {
          for (const auto& [item, table] : batch) {
            benchmark::DoNotOptimize(item->toJson());
          }
        },
        period, threadCount * addsOfEach);
    dispatcher.start();
    std::vector<std::vector<double>> times(threadCount);
    std::vector<std::thread> threads;
    for (auto& own : times) {
      threads.emplace_back([&] { own = latencies(dispatcher, addsOfEach, interval); });
    }
    std::vector<double> all;
    for (std::size_t index = 0; index < threads.size(); ++index) {
      threads[index].join();
      all.insert(all.end(), times[index].begin(), times[index].end());
    }
    std::ranges::sort(all);
    state.counters["p50"] = all[all.size() / 2];
    state.counters["p99"] = all[all.size() * 99 / 100];
    state.counters["max"] = all.back();
  }
}
BENCHMARK(insertContended)->Name("insert, contended/ours")->Iterations(1)->UseRealTime();

}  // namespace
}  // namespace qel::benchmarks
