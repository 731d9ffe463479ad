#pragma once

#include <gtest/gtest.h>

#include "host/QelLog/LogManager.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

inline void logMessage(const std::string& message, int level = log::Level::Warning) {
  log::LogManager::instance().getLogger("test")->log(level, message);
}

/// A thread of its own writes the log.
inline void waitForTheLog() {
  EXPECT_TRUE(log::LogManager::instance().flush(std::chrono::seconds(10)));
}

/// The content of a log file.
inline std::string loggedIn(const std::filesystem::path& file) {
  waitForTheLog();
  return contentOf(file);
}

/// Keeps the log of its lifetime.
class CapturedLog {
 public:
  explicit CapturedLog(int lowestLevel = log::Level::Warning) {
    log::LogManager::instance().configure(
        {.lowestLevel = lowestLevel, .standardError = false, .file = file_});
  }
  ~CapturedLog() { log::LogManager::instance().configure({}); }
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;

  std::string text() const { return loggedIn(file_); }

 private:
  const TemporaryDirectory directory_;
  const std::filesystem::path file_ = directory_.path() / "log";
};

}  // namespace qel::test
