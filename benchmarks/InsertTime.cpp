#include <algorithm>
#include <array>
#include <chrono>
#include <iostream>

#include "benchmarks/Figures.h"
#include "benchmarks/Insertion.h"

namespace qel::benchmarks {

void measureInsert() {
  using Clock = std::chrono::steady_clock;
  std::array<double, 201> nanoseconds{};
  for (auto& time : nanoseconds) {
    runInsertions(insertionsOfBatch, [&](const auto& addAll) {
      const auto begin = Clock::now();
      addAll();
      time = std::chrono::duration<double, std::nano>(Clock::now() - begin).count();
    });
  }
  std::ranges::sort(nanoseconds);
  std::cout << nanoseconds[nanoseconds.size() / 2] / insertionsOfBatch << '\n';
}

}  // namespace qel::benchmarks
