#include <chrono>
#include <csignal>
#include <cstdlib>
#include <sstream>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/QelLog/LogManager.h"
#include "tests/support/Logged.h"
#include "tests/support/StalledPipe.h"

namespace qel::log {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using namespace testing;

void log(const std::string& message, int level = Level::Warning) {
  LogManager::instance().getLogger("test")->log(level, message);
}

void logNumbers(int count) {
  for (int number = 0; number < count; ++number) {
    log("number " + std::to_string(number));
  }
}

/// Makes the pipe standard error. The process ends when it waits for the pipe's reader.
void sendLogTo(const test::StalledPipe& pipe) {
  LogManager::instance().configure({});
  const int end = ::open(pipe.path().c_str(), O_WRONLY | O_CLOEXEC);
  ::dup2(end, STDERR_FILENO);
  ::close(end);
  alarm(20);
}

[[noreturn]] void exitWithAStalledLog() {
  const test::StalledPipe pipe;  // stays stalled while the process exits
  sendLogTo(pipe);
  std::filesystem::remove_all(pipe.path().parent_path());
  const auto begin = steady_clock::now();
  logNumbers(10'000);
  const bool isPrompt = steady_clock::now() - begin < 5s;
  LogManager::instance().configure({});
  alarm(4);  // The exit may wait for one second.
  std::exit(isPrompt ? 7 : 1);
}

TEST(LogManagerTest, AnExitWritesTheLogButDoesNotWaitForAStalledOne) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto logAndExit = [] {
    log(std::string(10'000'000, 'x') + "end");  // is still being written when the exit begins
    std::exit(7);
  };
  EXPECT_EXIT(logAndExit(), ExitedWithCode(7), EndsWith("xend\n"));
  EXPECT_EXIT(exitWithAStalledLog(), ExitedWithCode(7), "");
}

TEST(LogManagerTest, CountsTheMessagesThatAStalledLogDropped) {
  constexpr int count = 5000;
  const test::StalledPipe pipe;
  const int errors = ::dup(STDERR_FILENO);
  sendLogTo(pipe);
  logNumbers(count);
  EXPECT_FALSE(LogManager::instance().flush(50ms));
  std::istringstream lines(pipe.readUntil("number " + std::to_string(count - 1) + '\n'));
  EXPECT_TRUE(LogManager::instance().flush(10s));
  ::dup2(errors, STDERR_FILENO);
  ::close(errors);
  alarm(0);

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
  LogManager::instance().configure({.standardError = false, .file = directory.path() / "a"});
  log("early");
  LogManager::instance().configure(
      {.lowestLevel = Level::Error, .standardError = false, .file = directory.path() / "b"});
  log("too low");
  log("late", Level::Error);
  EXPECT_THAT(test::loggedIn(directory.path() / "a"), EndsWith(" warning test: early\n"));
  EXPECT_THAT(test::loggedIn(directory.path() / "b"), MatchesRegex("[^\n]* error test: late\n"));
}

TEST(LogManagerTest, KeepsFilesToTheirOwnerAlsoAfterARotation) {
  const test::TemporaryDirectory directory;
  umask(0);
  LogManager::instance().configure(
      {.standardError = false, .file = directory.path() / "log", .largestFile = 1000});
  logNumbers(50);
  EXPECT_TRUE(LogManager::instance().flush(10s));
  int files = 0;
  for (const auto& file : std::filesystem::directory_iterator(directory.path())) {
    EXPECT_EQ(file.status().permissions(), std::filesystem::perms(0600)) << file.path();
    ++files;
  }
  EXPECT_GT(files, 1);
}

TEST(LogManagerTest, ItsThreadTakesNoSignals) {
  log("begun");
  test::waitForTheLog();
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGUSR1);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  kill(getpid(), SIGUSR1);  // ends the process when another thread takes it
  int signal = 0;
  EXPECT_EQ(sigwait(&signals, &signal), 0);
}

#ifndef QEL_NO_THREADS_AFTER_FORK
TEST(LogManagerTest, AForkedChildLogsToo) {
  GTEST_FLAG_SET(death_test_style, "fast");  // forks while the parent's thread waits for messages
  const auto logAndExit = [] {
    log("child");
    std::exit(LogManager::instance().flush(10s) ? 7 : 1);
  };
  log("parent");
  test::waitForTheLog();
  EXPECT_EXIT(logAndExit(), ExitedWithCode(7), "test: child\n");
}
#endif

}  // namespace
}  // namespace qel::log
