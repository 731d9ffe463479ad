#include <mutex>
#include <thread>

#include <gmock/gmock.h>

#include "tests/support/FileRights.h"
#include "tests/support/Logged.h"
#ifndef _WIN32
#include "tests/support/StalledErrors.h"
#endif

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
#ifdef _WIN32
  LogManager::instance().configure(
      {.standardError = false, .file = {}, .receiver = [](int, const auto&, const auto&) {
         std::this_thread::sleep_for(1h);
       }});
#else
  const test::StalledErrors errors;  // stay stalled while the process exits
  LogManager::instance().configure({});
#endif
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
  const std::size_t before = LogManager::instance().dropped();
  int written = 0;
  int dropped = 0;
  std::mutex mutex;
  std::unique_lock stalled(mutex);
  LogManager::instance().configure(
      {.standardError = false,
       .file = {},
       .receiver = [&](int, const std::string& logger, const std::string& message) {
         const std::lock_guard waiting(mutex);
         (logger == "test" ? written : dropped) += logger == "test" ? 1 : std::stoi(message);
       }});
  logNumbers(count);
  EXPECT_FALSE(LogManager::instance().flush(50ms));
  stalled.unlock();
  LogManager::instance().configure({});
  EXPECT_EQ(written + dropped, count);
  EXPECT_GT(dropped, count / 2);
  EXPECT_EQ(LogManager::instance().dropped() - before, static_cast<std::size_t>(dropped));
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

TEST(LogManagerTest, CreatesTheTargetOfALinkAndOpensTheFileAgainAfterAFailedRotation) {
  const test::TemporaryDirectory directory;
  const auto folder = directory.path() / "folder";
  const auto file = folder / "log";
  std::filesystem::create_directory(folder);
  std::filesystem::create_symlink(directory.path() / "target", file);
  LogManager::instance().configure({.standardError = false, .file = file, .largestFile = 1000});
  logMessage("first");
  EXPECT_THAT(test::loggedIn(file), EndsWith(": first\n"));
  EXPECT_TRUE(test::isForOwnerAlone(directory.path() / "target"));
  std::filesystem::remove_all(folder);
  test::write(folder, "not a directory");
  logMessage(std::string(1000, 'x'));
  logMessage("lost");
  test::waitForTheLog();
  std::filesystem::remove(folder);
  logMessage("last");
  EXPECT_THAT(test::loggedIn(file), AllOf(EndsWith(": last\n"), Not(HasSubstr("lost"))));
}

}  // namespace
}  // namespace qel::log
