#include <stdexcept>
#include <vector>

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "benchmarks/RawDatabase.h"
#include "benchmarks/Storage.h"
#include "benchmarks/Timing.h"

namespace qel::benchmarks {
namespace {

using log::analytics::CipDatabaseClient;

constexpr int rowsOfDatabase = 80'000;

void store(benchmark::State& state) {
  const auto texts = renderedBatch();
  for (auto _ : state) {
    Storage storage;
    storage.beginPeriod();
    measure(state, [&] { storage.store(texts); });
    if (storage.rowsStored() != texts.size()) {
      state.SkipWithError("not every row was stored in both databases");
    }
  }
}
BENCHMARK(store)->Name("store/ours")->Apply(once);

void storeLimit(benchmark::State& state) {
  const auto statements = insertStatements(10'000);
  for (auto _ : state) {
    const test::TemporaryDirectory directory;
    RawDatabase sending(directory.path(), RawDatabase::sending);
    RawDatabase support(directory.path(), RawDatabase::support);
    measure(state, [&] {
      support.runTogether(statements);
      sending.runTogether(statements);
    });
  }
}
BENCHMARK(storeLimit)->Name("store/limit")->Apply(once);

/// The client of a copied database.
class FilledDatabase {
 public:
  explicit FilledDatabase(int rows) {
    copyDatabase(rows, directory_.path());
    const auto size = file_size(directory_.path() / RawDatabase::sending);
    client.initialize(directory_.text());
    if (client.getDatabaseFileSize() != size) {
      throw std::logic_error("the client does not take the database for its own");
    }
  }

 private:
  const test::TemporaryDirectory directory_;

 public:
  CipDatabaseClient client;
};

void read(benchmark::State& state) {
  FilledDatabase database(rowsOfDatabase);
  for (auto _ : state) {
    CipDatabaseClient::RowMap rows;
    measure(state, [&] { rows = database.client.getAll(CipDatabaseClient::Items).second; });
    if (rows.size() != rowsOfDatabase) {
      state.SkipWithError("rows are missing");
    }
  }
}
BENCHMARK(read)->Name("read/ours")->Apply(once);

void readLimit(benchmark::State& state) {
  const test::TemporaryDirectory directory;
  copyDatabase(rowsOfDatabase, directory.path());
  RawDatabase database(directory.path(), RawDatabase::sending);
  for (auto _ : state) {
    RawDatabase::RowMap rows;
    measure(state, [&] { rows = database.rows("Items"); });
    if (rows.size() != rowsOfDatabase) {
      state.SkipWithError("rows are missing");
    }
  }
}
BENCHMARK(readLimit)->Name("read/limit")->Apply(once);

void deleteRows(benchmark::State& state, int count) {
  for (auto _ : state) {
    FilledDatabase database(count);
    auto batches = deletedIds(count);
    measure(state, [&] {
      for (auto& ids : batches) {
        database.client.deleteByIds(CipDatabaseClient::Items, ids);
      }
      database.client.vacuum();
    });
    if (!database.client.getAllItems().empty()) {
      state.SkipWithError("rows are left");
    }
  }
}
BENCHMARK_CAPTURE(deleteRows, ours, rowsOfDatabase)->Name("delete/ours")->Apply(once);

void deleteLimit(benchmark::State& state) {
  const auto statements = deleteStatements(rowsOfDatabase);
  for (auto _ : state) {
    const test::TemporaryDirectory directory;
    copyDatabase(rowsOfDatabase, directory.path());
    RawDatabase database(directory.path(), RawDatabase::sending);
    measure(state, [&] {
      for (const auto& statement : statements) {
        database.run(statement);
      }
    });
    if (!database.rows("Items").empty()) {
      state.SkipWithError("rows are left");
    }
  }
}
BENCHMARK(deleteLimit)->Name("delete/limit")->Apply(once);

void growthOfDelete(benchmark::State& state) {
  deleteRows(state, static_cast<int>(state.range(0)));
}
BENCHMARK(growthOfDelete)->Name("growth/delete")->Apply(growing);

void growthOfStore(benchmark::State& state) {
  const auto texts = renderedBatch();
  for (auto _ : state) {
    Storage storage;
    storage.beginPeriod();
    measure(state, [&] {
      for (int stored = 0; stored < state.range(0); stored += static_cast<int>(texts.size())) {
        storage.store(texts);
      }
    });
    if (storage.rowsStored() != static_cast<std::size_t>(state.range(0))) {
      state.SkipWithError("not every row was stored in both databases");
    }
  }
}
BENCHMARK(growthOfStore)->Name("growth/store")->Apply(growing);

}  // namespace
}  // namespace qel::benchmarks
