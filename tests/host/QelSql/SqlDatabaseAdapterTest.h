#pragma once

#include <future>

#include <gmock/gmock.h>

#include "host/QelSql/DatabaseFile.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/Patience.h"
#include "tests/support/Logged.h"

namespace qel::db::sql {

using namespace std::chrono_literals;
using namespace std::string_literals;
using namespace test;
using namespace testing;
using utilities::Patience;
using utilities::setExitDeadline;

namespace fs = std::filesystem;
using Rows = Result::Rows;

#ifdef _WIN32
inline constexpr bool onWindows = true;
#else
inline constexpr bool onWindows = false;
#endif

inline const std::string creation =
    "CREATE TABLE IF NOT EXISTS T (ID INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT)";

/// A database with a table T.
class TestDatabase : public SqlDatabaseAdapter {
 public:
  explicit TestDatabase(const fs::path& file) : SqlDatabaseAdapter(file) {
    EXPECT_EQ("", errorOf("PRAGMA auto_vacuum = INCREMENTAL;"));
    EXPECT_EQ("", errorOf(creation));
  }

  std::string errorOf(const std::string& statement) {
    return execute(statement).sErrorMessageGet();
  }
  bool insert(const std::string& json) {
    return execute("INSERT into T(json) VALUES ('" + json + "')").boSuccess();
  }
  Rows rows() { return selectAll("T").result(); }
};

/// A directory for databases, and the log of what happens to them.
class SqlDatabaseAdapterTest : public testing::Test {
 protected:
  SqlDatabaseAdapterTest() { emptyDirectory(); }

  void emptyDirectory() const {
    fs::remove_all(directory_);
    fs::create_directory(directory_);
  }
  std::string logged() const { return log_.text(); }
  std::vector<fs::path> asideFiles() const {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(directory_)) {
      if (entry.path().filename().string().starts_with("T.db.corrupt-")) {
        files.push_back(entry.path());
      }
    }
    return files;
  }

  const CapturedLog log_;
  const TemporaryDirectory temporary_;
  const fs::path directory_ = temporary_.path() / "data";
  const fs::path file_ = directory_ / "T.db";
};

}  // namespace qel::db::sql
