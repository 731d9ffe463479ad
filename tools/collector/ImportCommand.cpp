#include "tools/collector/ImportCommand.h"

#include <iostream>

#include <CLI/CLI.hpp>
#include <sqlite3.h>

#include "host/QelUtilities/PathText.h"
#include "tools/collector/ClickHouseStore.h"
#include "tools/common/InputError.h"
#include "tools/records/Moment.h"
#include "tools/records/ReadOnlyConnection.h"
#include "tools/records/Statement.h"

namespace qel::collector {
namespace {

using namespace std::chrono_literals;

constexpr auto longestInsert = 1min;
constexpr std::size_t rowsOfInsert = 50'000;
constexpr std::size_t bytesOfInsert = std::size_t{64} << 20;

/// Reads one table of an SQLite store.
class TableReader {
 public:
  TableReader(const records::ReadOnlyConnection& file, const std::string& table,
              const std::string& reason)
      : file_(file),
        statement_(file.handle(), "SELECT received, user, count, text, " + reason + " FROM " +
                                      table + " ORDER BY id") {}

  bool next() {
    const int result = statement_.step();
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
      file_.fail(result);
    }
    return result == SQLITE_ROW;
  }

  Origin origin() const {
    const auto received = records::millisecondsOf(statement_.text(0)).value_or(0);
    return {statement_.text(1),
            std::chrono::system_clock::time_point(std::chrono::milliseconds(received))};
  }
  std::size_t count() const { return static_cast<std::size_t>(statement_.number(2)); }
  std::string_view text() const { return statement_.blob(3); }
  std::string_view reason() const { return statement_.text(4); }

 private:
  const records::ReadOnlyConnection& file_;
  records::Statement statement_;
};

class Import {
 public:
  Import(const records::ReadOnlyConnection& file, ClickHouseStore& store)
      : file_(file), store_(store) {}

  std::size_t events() { return copyTable("events", &ClickHouseRows::addEvent); }
  std::size_t environments() { return copyTable("environments", &ClickHouseRows::addEnvironment); }

  std::size_t refused() {
    TableReader reader(file_, "refused", "reason");
    while (reader.next()) {
      rows_.addRefused({reader.text(), reader.count(), reader.reason()}, reader.origin());
      countRow(reader.text());
    }
    return finish();
  }

 private:
  std::size_t copyTable(const std::string& table,
                        void (ClickHouseRows::*add)(const Row&, const Origin&)) {
    TableReader reader(file_, table, "NULL");
    while (reader.next()) {
      auto [verdict, columns] = tools::readRow(reader.text());
      if (verdict != tools::RowVerdict::Sound) {
        throw StoreError("the table " + table + " has a text that is no row: the store is damaged");
      }
      (rows_.*add)({reader.text(), reader.count(), std::move(columns)}, reader.origin());
      countRow(reader.text());
    }
    return finish();
  }

  void countRow(std::string_view text) {
    ++count_;
    bytes_ += text.size();
    if (count_ % rowsOfInsert == 0 || bytes_ > bytesOfInsert) {
      insert();
    }
  }

  void insert() {
    store_.insert(rows_, std::chrono::steady_clock::now() + longestInsert);
    bytes_ = 0;
  }

  std::size_t finish() {
    insert();
    return std::exchange(count_, 0);
  }

  const records::ReadOnlyConnection& file_;
  ClickHouseStore& store_;
  ClickHouseRows rows_;
  std::size_t count_ = 0;  ///< of the table
  std::size_t bytes_ = 0;  ///< of the next insert
};

}  // namespace

void addImportCommand(CLI::App& program, ImportOptions& options) {
  CLI::App* const command =
      program.add_subcommand("import", "Copies an SQLite store into ClickHouse.");
  command->add_option("file", options.file, "the collector's SQLite file")->required();
  addStoreOptions(*command, options.store, true);
  addCreateOption(*command, options.store);
}

int importStore(const ImportOptions& options) {
  const auto access = clickHouseAccess(options.store);
  if (!access) {
    throw tools::InputError("--store: rows are imported into clickhouse://HOST:PORT/DATABASE");
  }
  const records::ReadOnlyConnection file(utilities::pathFromUtf8(options.file));
  using Missing = ClickHouseStore::Missing;
  ClickHouseStore store(*access, options.store.isCreated ? Missing::Create : Missing::Fail);
  Import copy(file, store);
  const auto environments = copy.environments();
  const auto events = copy.events();
  std::cout << "imported events " << events << ", environments " << environments
            << ", refused texts " << copy.refused() << '\n';
  return 0;
}

}  // namespace qel::collector
