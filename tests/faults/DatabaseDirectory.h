#pragma once

#include <gmock/gmock.h>

#include "host/QelUtilities/PathText.h"
#include "tests/faults/Effort.h"
#include "tests/support/Logged.h"
#include "tests/support/Query.h"
#include "tests/support/Session.h"
#include "tests/support/Tally.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

/// Rows that belong together.
using Batch = std::vector<std::pair<std::string, CipDatabaseClientInterface::Table>>;

inline Batch batchOf(const std::string& name) {
  return {{name + '1', Items}, {name + '2', Items}, {name + '3', Items}};
}

/// A directory in memory for databases, and a log file.
class DatabaseDirectory : public testing::Test {
 protected:
  DatabaseDirectory() {
    log::LogManager::instance().configure({.standardError = false, .file = log_});
    // The first message starts the thread of the log: memory may be short later.
    log::LogManager::instance().getLogger("test")->log(log::Level::Warning, "begun");
    emptyDirectory();
  }

  void emptyDirectory() const {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directory(folder_);
  }

  int timesLogged(const std::string& text) const {
    const auto log = loggedIn(log_);
    int times = 0;
    for (auto at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
      ++times;
    }
    return times;
  }

  const TemporaryDirectory directory_;
  const std::filesystem::path log_ = directory_.path() / "log";
  const std::filesystem::path folder_ = directory_.path() / "data";
  const std::filesystem::path sendingFile_ = folder_ / "ItemDatabase.db";
  const std::filesystem::path supportFile_ = folder_ / "SupportDatabase.db";
  const std::string data_ = utilities::utf8FromPath(folder_);
};

}  // namespace qel::test
