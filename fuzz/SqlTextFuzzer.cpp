// Any text is stored as it is, and nothing else in the database changes.

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "Application/Log/Analytics/Database/DatabaseAdapter.h"
#include "fuzz/Check.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::log::analytics::details {
namespace {

using fuzz::check;
using Rows = std::map<int, std::string>;

/// A database file with an empty table and one whose row must not change.
class Database {
 public:
  Database() {
    adapter_.addTableIfNotExists("Items");
    adapter_.addTableIfNotExists("Environments");
    adapter_.insert("stays", "Environments");
    schema_ = schema();
    check(!schema_.empty(), "the tables are there");
  }

  void checkStoring(const std::string& text) {
    adapter_.insert(text, "Items");
    // The SQL layer refuses a statement with a NUL in it.
    const bool isRefused = text.find('\0') != std::string::npos;
    check(adapter_.getAll("Items") == (isRefused ? Rows{} : Rows{{1, text}}),
          "a row is stored as it is");
    check(adapter_.getAll("Environments") == Rows{{1, "stays"}}, "the other table stays");
    check(schema() == schema_, "the tables stay the same");
    if (!isRefused) {
      adapter_.deleteByIds({1}, "Items");
    }
  }

 private:
  db::sql::Result::Rows schema() { return file_->selectAll("sqlite_schema").result(); }

  test::TemporaryDirectory directory_;
  std::shared_ptr<db::sql::SqlDatabaseInterface> file_ =
      std::make_shared<db::sql::SqlDatabaseAdapter>(directory_.path() / "Fuzz.db");
  DatabaseAdapter adapter_{file_};
  db::sql::Result::Rows schema_;
};

}  // namespace
}  // namespace qel::log::analytics::details

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static qel::log::analytics::details::Database database;
  database.checkStoring(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
