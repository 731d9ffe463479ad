#pragma once

#include <chrono>

#include "Application/Log/Analytics/Database/AccumulatingDispatcher.h"
#include "benchmarks/Workload.h"

namespace qel::benchmarks {

/// Small enough that each batch reuses the memory of the previous batch, as in a host.
constexpr int insertionsOfBatch = 1'000;

/// Prepares a dispatcher whose worker is not started, and calls `run` with the work that builds and
/// adds `count` items.
template <typename Run>
void runInsertions(int count, Run run) {
  using namespace log::analytics;
  AccumulatingDispatcher dispatcher([](const auto&) {}, std::chrono::seconds(1),
                                    static_cast<unsigned>(count));
  run([&] {
    for (int number = 0; number < count; ++number) {
      dispatcher.add(makeItem(number), CipDatabaseClientInterface::Items);
    }
  });
}

}  // namespace qel::benchmarks
