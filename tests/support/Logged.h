#pragma once

#include <gtest/gtest.h>

#include "host/QelLog/LogManager.h"
#include "tests/support/Files.h"

/// A thread of its own writes the log. These functions wait for it.
namespace qel::test {

inline void waitForTheLog() {
  EXPECT_TRUE(log::LogManager::instance().flush(std::chrono::seconds(10)));
}

/// The content of a log file.
inline std::string loggedIn(const std::filesystem::path& file) {
  waitForTheLog();
  return contentOf(file);
}

/// Ends a capture of standard error, and returns it with the log.
inline std::string endCaptureOfErrors() {
  waitForTheLog();
  return testing::internal::GetCapturedStderr();
}

}  // namespace qel::test
