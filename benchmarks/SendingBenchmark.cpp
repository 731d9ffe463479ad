#include <cstddef>
#include <string>
#include <vector>

#include "Application/Log/Analytics/Client/SendingPass.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Items/ItemWrapper.h"
#include "Application/Log/Analytics/ServerConnection/DbToServerConnection.h"
#include "benchmarks/RawDatabase.h"
#include "benchmarks/RawUpload.h"
#include "benchmarks/ServerProcess.h"
#include "benchmarks/Timing.h"
#include "benchmarks/Workload.h"
#include "host/QelHttp/Client.h"
#include "host/QelLog/LogManager.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::benchmarks {
namespace {

using log::analytics::CipDatabaseClient;
using log::analytics::details::PackageBatch;
using log::analytics::details::SendingPass;
using log::analytics::items::ItemWrapper;
using log::analytics::serverconnection::DbToServerConnection;
using RowMap = CipDatabaseClient::RowMap;

constexpr std::size_t packageSize = 1'000'000;
constexpr int packagesToUpload = 30;

/// As a pass has them in memory.
RowMap rowsOf(int count) {
  const test::TemporaryDirectory directory;
  copyDatabase(count, directory.path());
  CipDatabaseClient database;
  database.initialize(directory.text());
  return database.getAllItems();
}

/// Packs the rows as a pass does and hands each package's text to `take`.
template <typename Take>
void packAll(const RowMap& rows, Take take) {
  PackageBatch batch(packageSize);
  std::string package;
  const auto finish = [&] {
    ItemWrapper(batch.texts(), CipDatabaseClient::Items).writeTo(package);
    take(package);
    batch.clear();
  };
  for (const auto& [id, json] : rows) {
    batch.add(id, json);
    if (batch.isFull()) {
      finish();
    }
  }
  if (!batch.ids().empty()) {
    finish();
  }
}

std::vector<std::string> packagesOf(const RowMap& rows) {
  std::vector<std::string> packages;
  packAll(rows, [&](const std::string& package) { packages.push_back(package); });
  return packages;
}

void copy(const std::string& package) {
  std::string body(package);
  benchmark::DoNotOptimize(body.data());
  benchmark::ClobberMemory();
}

void pack(benchmark::State& state) {
  const auto rows = rowsOf(rowsOfFullDatabase);
  for (auto _ : state) {
    packAll(rows, [](const std::string& package) { benchmark::DoNotOptimize(package.data()); });
  }
}
BENCHMARK(pack)->Name("pack")->Iterations(5)->Unit(benchmark::kMillisecond);

/// On a connection that is there already.
void upload(benchmark::State& state) {
  const ServerProcess server;
  protocol::https::Message message{.host = ServerProcess::host,
                                   .path = ServerProcess::path,
                                   .contentType = ServerProcess::contentType,
                                   .body = std::string(packageSize, 'x'),
                                   .user = {},
                                   .secret = {}};
  const auto post = [&] {
    if (protocol::https::Client().post(message).statusCode != 204) {
      state.SkipWithError("refused");
    }
  };
  post();
  for (auto _ : state) {
    measure(state, [&] {
      for (int sent = 0; sent < packagesToUpload; ++sent) {
        post();
      }
    });
  }
}
BENCHMARK(upload)->Name("upload/ours")->Apply(once);

void uploadLimit(benchmark::State& state) {
  const ServerProcess server;
  RawUpload connection(server);
  const std::string body(packageSize, 'x');
  connection.post(body);
  for (auto _ : state) {
    measure(state, [&] {
      for (int sent = 0; sent < packagesToUpload; ++sent) {
        connection.post(body);
      }
    });
  }
}
BENCHMARK(uploadLimit)->Name("upload/limit")->Apply(once);

/// A database sent and emptied, with the connection to be made.
void pass(benchmark::State& state, int rows) {
  const ServerProcess server;
  const auto logger = log::LogManager::instance().getLogger("benchmark");
  for (auto _ : state) {
    const test::TemporaryDirectory directory;
    copyDatabase(rows, directory.path());
    const auto size = file_size(directory.path() / RawDatabase::sending);
    CipDatabaseClient database;
    database.initialize(directory.text());
    if (database.getDatabaseFileSize() != size) {
      state.SkipWithError("the client does not take the database for its own");
    }
    DbToServerConnection connection;
    measure(state, [&] { SendingPass(database, connection, *logger, packageSize).run(); });
    if (!database.getAllItems().empty()) {
      state.SkipWithError("rows are left");
    }
  }
}
BENCHMARK_CAPTURE(pass, full, rowsOfFullDatabase)->Name("whole pass/ours")->Apply(once);

/// The limits of reading, packing, uploading and deleting, one after the other on the same rows.
void passLimit(benchmark::State& state) {
  const ServerProcess server;
  const auto packages = packagesOf(rowsOf(rowsOfFullDatabase));
  const auto statements = deleteStatements(rowsOfFullDatabase);
  for (auto _ : state) {
    const test::TemporaryDirectory directory;
    copyDatabase(rowsOfFullDatabase, directory.path());
    RawDatabase database(directory.path(), RawDatabase::sending);
    measure(state, [&] {
      RawUpload connection(server);
      benchmark::DoNotOptimize(database.rows("Environments"));
      const auto rows = database.rows("Items");
      for (const auto& package : packages) {
        copy(package);
        connection.post(package);
      }
      for (const auto& statement : statements) {
        database.run(statement);
      }
    });
    if (!database.rows("Items").empty()) {
      state.SkipWithError("rows are left");
    }
  }
}
BENCHMARK(passLimit)->Name("whole pass/limit")->Apply(once);

void growthOfPass(benchmark::State& state) { pass(state, static_cast<int>(state.range(0))); }
BENCHMARK(growthOfPass)->Name("growth/pass")->Apply(growing);

}  // namespace
}  // namespace qel::benchmarks
