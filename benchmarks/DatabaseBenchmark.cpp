#include "benchmarks/FilledDatabase.h"
#include "benchmarks/Storage.h"
#include "benchmarks/Timing.h"

namespace qel::benchmarks {
namespace {

using log::analytics::CipDatabaseClient;

constexpr int rowsOfDatabase = 80'000;

void store(benchmark::State& state, int count) {
  const auto texts = renderedBatch();
  for (auto _ : state) {
    Storage storage;
    storage.beginPeriod();
    measure(state, [&] {
      for (int stored = 0; stored < count; stored += rowsOfBatch) {
        storage.store(texts);
      }
    });
    expect(state, storage.rowsStored() == static_cast<std::size_t>(count),
           "not every row was stored in both databases");
  }
}
BENCHMARK_CAPTURE(store, ours, rowsOfBatch)->Name("store/ours")->Apply(once);

void storeLimit(benchmark::State& state) {
  const auto statements = insertStatements(rowsOfBatch);
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

void read(benchmark::State& state) {
  FilledDatabase database(rowsOfDatabase);
  for (auto _ : state) {
    CipDatabaseClient::RowMap rows;
    measure(state, [&] { rows = database.client.getAll(CipDatabaseClient::Items).second; });
    expect(state, rows.size() == rowsOfDatabase, "rows are missing");
  }
}
BENCHMARK(read)->Name("read/ours")->Apply(once);

void readLimit(benchmark::State& state) {
  FilledRawDatabase database(rowsOfDatabase);
  for (auto _ : state) {
    RawDatabase::RowMap rows;
    measure(state, [&] { rows = database.raw.rows("Items"); });
    expect(state, rows.size() == rowsOfDatabase, "rows are missing");
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
    expect(state, database.client.getAllItems().empty(), "rows are left");
  }
}
BENCHMARK_CAPTURE(deleteRows, ours, rowsOfDatabase)->Name("delete/ours")->Apply(once);

void deleteLimit(benchmark::State& state) {
  const auto statements = deleteStatements(rowsOfDatabase);
  for (auto _ : state) {
    FilledRawDatabase database(rowsOfDatabase);
    measure(state, [&] { database.raw.runAll(statements); });
    expect(state, database.raw.rows("Items").empty(), "rows are left");
  }
}
BENCHMARK(deleteLimit)->Name("delete/limit")->Apply(once);

void growthOfDelete(benchmark::State& state) {
  deleteRows(state, static_cast<int>(state.range(0)));
}
BENCHMARK(growthOfDelete)->Name("growth/delete")->Apply(growing);

void growthOfStore(benchmark::State& state) { store(state, static_cast<int>(state.range(0))); }
BENCHMARK(growthOfStore)->Name("growth/store")->Apply(growing);

}  // namespace
}  // namespace qel::benchmarks
