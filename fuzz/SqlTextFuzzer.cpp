// Checks that any text without a NUL is stored unchanged and that nothing else in the database
// changes.

#include "Application/Log/Analytics/Database/DatabaseAdapter.h"
#include "fuzz/Check.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "tests/support/TemporaryDirectory.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qel;
  using Rows = std::map<int, std::string>;
  static const test::TemporaryDirectory directory;
  static const std::shared_ptr<db::sql::SqlDatabaseInterface> file =
      std::make_shared<db::sql::SqlDatabaseAdapter>(directory.path() / "Fuzz.db");
  static log::analytics::details::DatabaseAdapter adapter(file);
  static const auto schema = [] {
    adapter.addTableIfNotExists("Items");
    adapter.addTableIfNotExists("Environments");
    adapter.insert("stays", "Environments");
    return file->selectAll("sqlite_schema").result();
  }();
  fuzz::check(!schema.empty(), "the tables are there");

  const std::string text(reinterpret_cast<const char*>(data), size);
  adapter.insert(text, "Items");
  // The SQL layer rejects a statement that contains a NUL.
  const bool isRefused = text.find('\0') != std::string::npos;
  fuzz::check(adapter.getAll("Items") == (isRefused ? Rows{} : Rows{{1, text}}),
              "a row is stored as it is");
  fuzz::check(adapter.getAll("Environments") == Rows{{1, "stays"}}, "the other table stays");
  fuzz::check(file->selectAll("sqlite_schema").result() == schema, "the tables stay the same");
  if (!isRefused) {
    adapter.deleteByIds({1}, "Items");
  }
  return 0;
}
