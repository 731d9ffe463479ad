#include <atomic>
#include <chrono>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <thread>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/Reports/MemoryUsageObserver.h"
#include "benchmarks/Activation.h"
#include "benchmarks/Figures.h"
#include "host/QelPlatformWindows/SystemInformation.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::benchmarks {
namespace {

using namespace log::analytics;
using Clock = std::chrono::steady_clock;

std::uint64_t residentKilobytes() {
  return platform::windows::SystemInformation::getUsedPhysicalMemoryOfCurrentProcessInKB();
}

/// The CPU time of all threads of the process. On Windows `std::clock` would be the elapsed time.
double cpuSeconds() {
  timespec time{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

}  // namespace

void measureIdleClient(int simulatedMinutes, int speed) {
  const test::TemporaryDirectory directory;
  auto pair = std::make_unique<CipDatabases>(std::make_unique<CipDatabaseClient>(),
                                             std::make_unique<SupportDatabaseClient>(std::nullopt));
  CipDatabases& databases = *pair;
  Client client(std::move(pair));
  client.activate(activation(directory.text(), false));
  reports::MemoryUsageOptions options;
  std::atomic<int> samples{0};
  options.samplingInterval /= speed;
  options.reportingInterval /= speed;
  options.usedByProcessInKB = [&] {
    ++samples;
    return residentKilobytes();
  };
  reports::MemoryUsageObserver observer(databases, options);

  const auto begin = Clock::now();
  const double cpuBefore = cpuSeconds();
  observer.start();
  std::cout << "simulated minute, resident KB\n";
  for (int minute = 0; minute <= simulatedMinutes; ++minute) {
    std::this_thread::sleep_until(begin + Clock::duration(std::chrono::minutes(minute)) / speed);
    if (minute % 10 == 0 || minute == simulatedMinutes) {
      std::cout << minute << ", " << residentKilobytes() << std::endl;
    }
  }
  const double cpu = cpuSeconds() - cpuBefore;
  const std::chrono::duration<double> wall = Clock::now() - begin;
  databases.join();
  std::cout << std::setprecision(3) << "samples of each kind: " << samples << '\n'
            << "CPU time: " << cpu * 1000 << " ms over the " << wall.count()
            << " s that the run took\n"
            << "share of a core: " << cpu / wall.count() * 100 << " %\n"
            << "share over the simulated time: " << cpu / (wall.count() * speed) * 100 << " %\n";
}

}  // namespace qel::benchmarks
