#include <thread>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Application/Log/Analytics/Reports/MemoryUsageObserver.h"
#include "tests/support/MemoryStorage.h"
#include "tests/support/StoredEvent.h"
#include "tests/support/Tally.h"

namespace {

using namespace std::chrono_literals;
using qel::datetime::DateTime;
using qel::log::analytics::CipDatabaseClientInterface;
using qel::log::analytics::reports::CrashReadableSamples;
using qel::log::analytics::reports::MemoryUsageObserver;
using qel::log::analytics::reports::MemoryUsageOptions;
using qel::test::MemoryStorage;
using qel::test::Tally;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

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
      return values.at(std::min<std::size_t>(samples_.count(), values.size() - 1));
    };
    options.usedByProcessInKB = [this, bySystem = options.usedBySystemInKB] {
      const auto value = 1000 * bySystem();
      samples_.add();
      return value;
    };
    return options;
  }
  std::vector<std::string> recorded() {
    storage_.databases->join();
    return qel::test::summariesOf(storage_.support->texts(Items));
  }

  MemoryStorage storage_;
  Tally samples_;
};

TEST_F(MemoryUsageObserverTest, SamplesEveryTenSecondsAndReportsEveryFiveMinutes) {
  EXPECT_EQ(MemoryUsageOptions().samplingInterval, 10s);
  EXPECT_EQ(MemoryUsageOptions().reportingInterval, 5min);
}

TEST_F(MemoryUsageObserverTest, ReportsSmallestAndLargestAtTheEnd) {
  auto options = readings({5, 3, 3, 9, 4});
  {
    MemoryUsageObserver observer(storage_.initialized(), options);
    observer.start();
    EXPECT_TRUE(samples_.reaches(5));
  }
  EXPECT_THAT(recorded(), ElementsAre("MemoryUsage|Application|Runtime|Max=9000;Min=3000",
                                      "MemoryUsage|Total|Runtime|Max=9;Min=3"));
}

TEST_F(MemoryUsageObserverTest, ForgetsWhatItHasReported) {
  auto options = readings({7});
  options.samplingInterval = never;
  options.reportingInterval = 1ms;
  Tally batches;
  storage_.support->beforeBatch = [&](const auto&) { batches.add(); };
  {
    MemoryUsageObserver observer(storage_.initialized(), options);
    observer.start();
    EXPECT_TRUE(samples_.reaches(1));
    EXPECT_TRUE(batches.reaches(1));
  }
  EXPECT_THAT(recorded(), ElementsAre("MemoryUsage|Application|Runtime|Max=7000;Min=7000",
                                      "MemoryUsage|Total|Runtime|Max=7;Min=7"));
}

TEST_F(MemoryUsageObserverTest, TellsACrashEveryReadingAndKeepsThem) {
  MemoryUsageObserver observer(storage_.initialized(), readings({7}));
  observer.start();
  EXPECT_TRUE(samples_.reaches(3));
  observer.reportDetailedMemoryUsageOfCurrentProcessForCrash();
  observer.reportDetailedMemoryUsageOfSystemForCrash();
  observer.reportDetailedMemoryUsageOfSystemForCrash();
  storage_.databases->join();
  const auto stored = storage_.support->texts(Items);
  const struct {
    std::string scope;
    std::string amount;
  } expected[] = {{"Application", "7000"}, {"Total", "7"}, {"Total", "7"}};
  ASSERT_THAT(stored, SizeIs(std::size(expected)));
  for (std::size_t i = 0; i < stored.size(); ++i) {
    const auto item = nlohmann::json::parse(stored[i]);
    EXPECT_EQ(item.at("Category"), "MemoryUsage");
    EXPECT_EQ(item.at("Subcategory"), expected[i].scope);
    EXPECT_EQ(item.at("Event"), "Crashed");
    const auto details = item.at("Details").get<std::map<std::string, std::string>>();
    EXPECT_GE(details.size(), 3U);  // at least one reading beside these two
    EXPECT_TRUE(details.contains("Min") && details.contains("Max"));
    for (const auto& [key, value] : details) {
      EXPECT_EQ(value, expected[i].amount) << key;
    }
  }
}

TEST_F(MemoryUsageObserverTest, ReportsNothingWithoutSamples) {
  { MemoryUsageObserver observer(storage_.initialized(), readings({1})); }
  MemoryUsageObserver observer(*storage_.databases, readings({1}));
  observer.reportDetailedMemoryUsageOfCurrentProcessForCrash();
  observer.reportDetailedMemoryUsageOfSystemForCrash();
  EXPECT_THAT(recorded(), IsEmpty());
}

TEST_F(MemoryUsageObserverTest, EndsOnceTheDatabasesHaveFailed) {
  storage_.support->beforeBatch = [](const auto&) { throw std::runtime_error("disk"); };
  storage_.initialized().insert(std::make_unique<qel::log::analytics::items::MemoryUsageItem>(
                                    qel::log::analytics::items::MemoryUsageItem::Scope::Total,
                                    qel::log::analytics::items::MemoryUsageItem::Phase::Runtime),
                                Items);
  storage_.databases->join();
  ASSERT_TRUE(storage_.databases->errorOccurred());
  MemoryUsageObserver observer(*storage_.databases, readings({1}));
  observer.start();
  // A loop of the same interval shows that there would have been time for more.
  Tally elapsed;
  qel::util::ThreadedLoop clock;
  clock.perform({},
                [&] {
                  elapsed.add();
                  return true;
                },
                1ms, {});
  EXPECT_TRUE(elapsed.reaches(20));
  EXPECT_EQ(samples_.count(), 1);
}

TEST(CrashReadableSamplesTest, HoldsWhatCameSinceTheLastClear) {
  CrashReadableSamples samples;
  EXPECT_THAT(samples.read(), IsEmpty());
  samples.add(DateTime(2), 20);
  samples.add(DateTime(1), 10);
  EXPECT_THAT(samples.read(), ElementsAre(Pair(DateTime(1), 10), Pair(DateTime(2), 20)));
  samples.clear();
  EXPECT_THAT(samples.read(), IsEmpty());
  for (std::size_t i = 0; i < CrashReadableSamples::capacity + 5; ++i) {
    samples.add(DateTime(static_cast<double>(i)), i);
  }
  EXPECT_THAT(samples.read(), SizeIs(CrashReadableSamples::capacity));
}

/// Under ThreadSanitizer this fails for a container that a crash must not read while it is written.
TEST(CrashReadableSamplesTest, AReaderSeesWholeReadingsOnly) {
  CrashReadableSamples samples;
  std::atomic<bool> done{false};
  std::thread reader([&] {
    while (!done) {
      for (const auto& [time, kilobytes] : samples.read()) {
        EXPECT_EQ(time.secondsSinceEpoch(), static_cast<double>(kilobytes));
      }
    }
  });
  for (std::uint64_t i = 0; i < CrashReadableSamples::capacity; ++i) {
    samples.add(DateTime(static_cast<double>(i)), i);
  }
  samples.clear();
  for (std::uint64_t i = 0; i < CrashReadableSamples::capacity; ++i) {
    samples.add(DateTime(static_cast<double>(i)), i);
  }
  done = true;
  reader.join();
}

}  // namespace
