#include <gmock/gmock.h>

#include "tests/support/FileRights.h"
#include "tests/support/Logged.h"
#include "tests/support/StalledErrors.h"

namespace qel::log {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using namespace testing;
using test::logMessage;

void logNumbers(int count) {
  for (int number = 0; number < count; ++number) {
    logMessage("number " + std::to_string(number));
  }
}

[[noreturn]] void exitWithAStalledLog() {
  const test::StalledErrors errors;  // stay stalled while the process exits
  LogManager::instance().configure({});
  const auto begin = steady_clock::now();
  logNumbers(10'000);
  const bool isPrompt = steady_clock::now() - begin < 5s;
  LogManager::instance().configure({});
  std::exit(isPrompt ? 7 : 1);
}

TEST(LogManagerTest, AnExitWritesTheLogButDoesNotWaitForAStalledOne) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto logAndExit = [] {
    logMessage(std::string(10'000'000, 'x') +
               "end");  // is still being written when the exit begins
    std::exit(7);
  };
  EXPECT_EXIT(logAndExit(), ExitedWithCode(7), EndsWith("xend\n"));
  const auto begin = steady_clock::now();
  EXPECT_EXIT(exitWithAStalledLog(), ExitedWithCode(7), "");
  EXPECT_LT(steady_clock::now() - begin, 15s);  // `configure` and the exit may wait a second each
}

TEST(LogManagerTest, CountsTheMessagesThatAStalledLogDropped) {
  constexpr int count = 5000;
  const auto errors = std::make_unique<test::StalledErrors>();
  LogManager::instance().configure({});
  logNumbers(count);
  EXPECT_FALSE(LogManager::instance().flush(50ms));
  std::istringstream lines(errors->readUntil("number " + std::to_string(count - 1) + '\n'));
  EXPECT_TRUE(LogManager::instance().flush(10s));

  int written = 0;
  int dropped = 0;
  for (std::string line; std::getline(lines, line);) {
    int number = 0;
    if (std::sscanf(line.c_str(), "%*s warning qel.log: %d log messages were", &number) == 1) {
      dropped += number;
    } else if (std::sscanf(line.c_str(), "%*s warning test: number %d", &number) == 1) {
      ++written;
    }
  }
  EXPECT_EQ(written + dropped, count);
  EXPECT_GT(dropped, count / 2);
}

TEST(LogManagerTest, WritesAMessageToTheFileThatWasSetWhenItCame) {
  const test::TemporaryDirectory directory;
  const auto first = directory.path() / u8"B\u00fcr\u00f6" / u8"\u56f3\u9762.log";
  const auto second = directory.path() / "b";
  LogManager::instance().configure({.standardError = false, .file = first});
  logMessage("early");
  LogManager::instance().configure(
      {.lowestLevel = Level::Error, .standardError = false, .file = second});
  logMessage("too low");
  logMessage("late", Level::Error);
  EXPECT_THAT(test::loggedIn(first), EndsWith(" warning test: early\n"));
  EXPECT_THAT(test::loggedIn(second),
              AllOf(EndsWith(" error test: late\n"), Not(HasSubstr("too low"))));
}

TEST(LogManagerTest, KeepsFilesToTheirOwnerAlsoAfterARotation) {
  const test::TemporaryDirectory directory;
  LogManager::instance().configure(
      {.standardError = false, .file = directory.path() / "new" / "log", .largestFile = 1000});
  logNumbers(50);
  EXPECT_TRUE(LogManager::instance().flush(10s));
  int files = 0;
  for (const auto& file : std::filesystem::directory_iterator(directory.path() / "new")) {
    EXPECT_TRUE(test::isForOwnerAlone(file)) << file.path();
    ++files;
  }
  EXPECT_GT(files, 1);
}

}  // namespace
}  // namespace qel::log
