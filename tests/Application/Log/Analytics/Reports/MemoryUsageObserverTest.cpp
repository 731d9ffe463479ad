#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Application/Log/Analytics/Reports/MemoryUsageObserver.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/Tally.h"

namespace qel::log::analytics::reports {
namespace {

using namespace std::chrono_literals;
using datetime::DateTime;
using namespace testing;

constexpr auto Items = CipDatabaseClientInterface::Items;
constexpr auto never = 1000h;

class MemoryUsageObserverTest : public testing::Test {
 protected:
  /// Options whose readings come from a list, the process's ones a thousand times the system's.
  MemoryUsageOptions readings(std::vector<std::uint64_t> values) {
    MemoryUsageOptions options;
    options.reportingInterval = never;
    options.samplingInterval = 1ms;
    options.usedBySystemInKB = [this, values] {
      return values.at(std::min(std::size_t(samples_.count()), values.size() - 1));
    };
    options.usedByProcessInKB = [this, bySystem = options.usedBySystemInKB] {
      const auto value = 1000 * bySystem();
      samples_.add();
      return value;
    };
    return options;
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

TEST_F(MemoryUsageObserverTest, ForgetsWhatItHasReported) {
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
  EXPECT_THAT(storage_.recorded(), ElementsAre("MemoryUsage|Application|Runtime|Max=7000;Min=7000",
                                               "MemoryUsage|Total|Runtime|Max=7;Min=7"));
}

TEST_F(MemoryUsageObserverTest, TellsACrashEveryReadingAndKeepsThem) {
  MemoryUsageObserver observer(databases_, readings({7}));
  observer.reportDetailedMemoryUsageOfSystemForCrash();  // tells nothing without samples
  observer.start();
  EXPECT_TRUE(samples_.reaches(3));
  observer.reportDetailedMemoryUsageOfCurrentProcessForCrash();
  observer.reportDetailedMemoryUsageOfSystemForCrash();
  observer.reportDetailedMemoryUsageOfSystemForCrash();
  databases_.join();
  std::vector<std::string> told;
  for (const auto& stored : storage_.support->texts(Items)) {
    const auto item = nlohmann::json::parse(stored);
    const std::map<std::string, std::string> details = item.at("Details");
    EXPECT_THAT(details, SizeIs(Ge(3U))) << "the smallest, the largest and readings";
    told.push_back(item.at("Subcategory").get<std::string>() + ' ' + details.at("Min"));
    EXPECT_THAT(details, Each(Pair(_, details.at("Min"))));
  }
  EXPECT_THAT(told, ElementsAre("Application 7000", "Total 7", "Total 7"));
}

TEST(CrashReadableSamplesTest, HoldsTheFirstUpToItsCapacitySinceTheLastClear) {
  details::CrashReadableSamples samples;
  samples.add(DateTime(-1), 10);
  samples.clear();
  EXPECT_THAT(samples.read(), IsEmpty());
  for (std::size_t i = 0; i < details::CrashReadableSamples::capacity + 5; ++i) {
    samples.add(DateTime(static_cast<double>(i)), i);
  }
  EXPECT_THAT(samples.read(), SizeIs(details::CrashReadableSamples::capacity));
}

}  // namespace
}  // namespace qel::log::analytics::reports
