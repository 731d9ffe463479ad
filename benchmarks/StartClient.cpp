// Measures how long a client's activation keeps the host's thread, in a process that does nothing
// else, with the databases in the given directory. Prints milliseconds.

#include <chrono>
#include <iostream>
#include <memory>
#include <optional>

#include "Application/Log/Analytics/Client/Client.h"
#include "benchmarks/Storage.h"

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::cerr << "Usage: QelStartClient DIRECTORY\n";
    return 2;
  }
  using namespace qel::log::analytics;
  qel::benchmarks::NoWebUpdates webUpdates;
  Client client(
      std::make_unique<CipDatabases>(std::make_unique<CipDatabaseClient>(),
                                     std::make_unique<SupportDatabaseClient>(std::nullopt)));
  const auto parameter = qel::benchmarks::activation(webUpdates, arguments[1], false);
  const auto begin = std::chrono::steady_clock::now();
  client.activate(parameter);
  const std::chrono::duration<double, std::milli> elapsed =
      std::chrono::steady_clock::now() - begin;
  std::cout << elapsed.count() << '\n';
  return 0;
}
