// Measures how long a client's activation keeps the host's thread, in a process that does nothing
// else. Prints milliseconds.

#include <chrono>
#include <iostream>
#include <memory>
#include <optional>

#include "Application/Log/Analytics/Client/Client.h"
#include "benchmarks/Storage.h"

int main() {
  using namespace qel::log::analytics;
  const qel::test::TemporaryDirectory directory;
  qel::benchmarks::NoWebUpdates webUpdates;
  Client client(
      std::make_unique<CipDatabases>(std::make_unique<CipDatabaseClient>(),
                                     std::make_unique<SupportDatabaseClient>(std::nullopt)));
  const auto parameter = qel::benchmarks::activation(webUpdates, directory.text(), false);
  const auto begin = std::chrono::steady_clock::now();
  client.activate(parameter);
  const std::chrono::duration<double, std::milli> elapsed =
      std::chrono::steady_clock::now() - begin;
  std::cout << elapsed.count() << '\n';
  return 0;
}
