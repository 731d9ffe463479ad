#pragma once

#include <chrono>

#include <benchmark/benchmark.h>

namespace qel::benchmarks {

/// Runs `work` and reports its duration as the time of the iteration. If `work` consists of `count`
/// equal steps, reports the time of one step.
template <typename Work>
void measure(benchmark::State& state, Work work, int count = 1) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
  state.SetIterationTime(elapsed.count() / count);
}

/// Fails the benchmark with the message unless the condition holds.
inline void expect(benchmark::State& state, bool condition, const char* message) {
  if (!condition) {
    state.SkipWithError(message);
  }
}

/// For work that takes milliseconds and whose preparation is not measured: one iteration per
/// repetition.
inline void once(benchmark::internal::Benchmark* work) {
  work->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
}

/// Like `once`, but for increasing numbers of rows, which show how the cost grows.
inline void growing(benchmark::internal::Benchmark* work) {
  once(work);
  for (int rows = 10'000; rows <= 160'000; rows *= 2) {
    work->Arg(rows);
  }
}

}  // namespace qel::benchmarks
