#include <gmock/gmock.h>

#include "Application/Log/Analytics/Reports/MemoryUsageObserver.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/Pattern.h"
#include "tests/support/Tally.h"

namespace qel::log::analytics::reports {

using namespace std::chrono_literals;
using datetime::DateTime;
using namespace testing;

constexpr auto never = 1000h;

class MemoryUsageObserverTest : public testing::Test {
 protected:
  /// Takes the system's readings from a list, the last one for ever; the process's readings are a
  /// thousand times larger.
  MemoryUsageOptions readings(std::vector<std::uint64_t> values) {
    const auto bySystem = [this, values] {
      return values.at(std::min(std::size_t(samples_.count()), values.size() - 1));
    };
    const auto byProcess = [this, bySystem] {
      const auto value = 1000 * bySystem();
      samples_.add();
      return value;
    };
    return {.samplingInterval = 1ms,
            .reportingInterval = never,
            .usedBySystemInKB = bySystem,
            .usedByProcessInKB = byProcess};
  }

  test::MemoryStorage storage_;
  CipDatabases& databases_ = storage_.initialized();
  test::Tally samples_;
};

TEST_F(MemoryUsageObserverTest, ReportsSmallestAndLargestAtTheEnd) {
  {
    MemoryUsageObserver observer(databases_, readings({5, 3, 3, 9, 4}));
    observer.start();
    EXPECT_TRUE(samples_.reaches(5));
  }
  EXPECT_THAT(storage_.recorded(), ElementsAre("MemoryUsage|Application|Runtime|Max=9000;Min=3000",
                                               "MemoryUsage|Total|Runtime|Max=9;Min=3"));
}

TEST_F(MemoryUsageObserverTest, ReportsEachReadingOnce) {
  auto options = readings({7});
  options.samplingInterval = never;
  options.reportingInterval = 1ms;
  test::Tally batches;
  storage_.support->beforeBatch = [&] { batches.add(); };
  {
    MemoryUsageObserver observer(databases_, options);
    observer.start();
    EXPECT_TRUE(batches.reaches(1));
  }
  EXPECT_THAT(storage_.recorded(), SizeIs(2));
}

TEST_F(MemoryUsageObserverTest, ReportsAllReadingsForACrashAndKeepsThem) {
  MemoryUsageObserver observer(databases_, readings({7}));
  observer.reportDetailedMemoryUsageOfSystemForCrash();  // reports nothing without samples
  observer.start();
  EXPECT_TRUE(samples_.reaches(3));
  for (int times = 0; times < 2; ++times) {
    observer.reportDetailedMemoryUsageOfCurrentProcessForCrash();
    observer.reportDetailedMemoryUsageOfSystemForCrash();
  }
  const auto process =
      test::MatchesPattern("MemoryUsage.Application.Crashed.([0-9]+=7000;)+Max=7000;Min=7000");
  const auto system = test::MatchesPattern("MemoryUsage.Total.Crashed.([0-9]+=7;)+Max=7;Min=7");
  EXPECT_THAT(storage_.recorded(), ElementsAre(process, system, process, system));
}

TEST(CrashReadableSamplesTest, HoldsTheFirstUpToItsCapacitySinceTheLastClear) {
  details::CrashReadableSamples samples;
  for (std::size_t i = 0; i < samples.capacity + 5; ++i) {
    samples.add(DateTime(static_cast<double>(i)), i);
  }
  EXPECT_THAT(samples.read(), SizeIs(samples.capacity));
  for (int times = 0; times < 2; ++times) {
    samples.clear();
    EXPECT_THAT(samples.read(), IsEmpty());
  }
}

}  // namespace qel::log::analytics::reports
