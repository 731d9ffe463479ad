#pragma once

#include <chrono>

#include <benchmark/benchmark.h>

namespace qel::benchmarks {

/// Runs the work as the iteration's measured part; with `count`, the time is that of one of so many
/// equal steps of it.
template <typename Work>
void measure(benchmark::State& state, Work work, int count = 1) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
  state.SetIterationTime(elapsed.count() / count);
}

/// For a work of milliseconds whose preparation is not measured: one iteration a repetition.
inline void once(benchmark::internal::Benchmark* work) {
  work->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
}

/// The same for each number of rows that shows how the work's cost grows.
inline void growing(benchmark::internal::Benchmark* work) {
  once(work);
  for (int rows = 10'000; rows <= 160'000; rows *= 2) {
    work->Arg(rows);
  }
}

}  // namespace qel::benchmarks
