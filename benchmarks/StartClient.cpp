#include <chrono>
#include <iostream>
#include <memory>
#include <optional>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "benchmarks/Activation.h"
#include "benchmarks/Figures.h"

namespace qel::benchmarks {

void measureStart(const std::string& directory) {
  using namespace log::analytics;
  Client client(
      std::make_unique<CipDatabases>(std::make_unique<CipDatabaseClient>(),
                                     std::make_unique<SupportDatabaseClient>(std::nullopt)));
  const auto parameter = activation(directory, false);
  const auto begin = std::chrono::steady_clock::now();
  client.activate(parameter);
  const std::chrono::duration<double, std::milli> elapsed =
      std::chrono::steady_clock::now() - begin;
  std::cout << elapsed.count() << '\n';
}

}  // namespace qel::benchmarks
