#include <csignal>

#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/support/Logged.h"

namespace qel::log {

using namespace testing;

TEST(LogThreadTest, ItsThreadTakesNoSignals) {
  test::logMessage("begun");
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
TEST(LogThreadTest, AForkedChildLogsToo) {
  GTEST_FLAG_SET(death_test_style, "fast");  // forks while the parent's thread waits for messages
  const auto logAndExit = [] {
    test::logMessage("child");
    std::exit(LogManager::instance().flush(std::chrono::seconds(10)) ? 7 : 1);
  };
  test::logMessage("parent");
  test::waitForTheLog();
  EXPECT_EXIT(logAndExit(), ExitedWithCode(7), "test: child\n");
}
#endif

}  // namespace qel::log
