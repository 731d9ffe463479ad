#pragma once

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "host/QelLog/LogManager.h"
#include "tests/support/Logged.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

/// A directory in memory for databases, and the log of what happens to them.
class DatabaseDirectory : public testing::Test {
 protected:
  DatabaseDirectory() {
    log::LogManager::instance().configure({.standardError = false, .file = log_});
    emptyDirectory();
  }

  void emptyDirectory() const {
    std::filesystem::remove_all(data_);
    std::filesystem::create_directory(data_);
  }

  std::string logged() const { return loggedIn(log_); }

  const TemporaryDirectory directory_ = [] {
    keepTemporaryDirectoriesInMemory();
    return TemporaryDirectory();
  }();
  const std::filesystem::path log_ = directory_.path() / "log";
  const std::filesystem::path data_ = directory_.path() / "data";
};

}  // namespace qel::test
