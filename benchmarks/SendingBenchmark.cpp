#include <cstddef>
#include <string>
#include <vector>

#include "Application/Log/Analytics/Client/PackageBatch.h"
#include "Application/Log/Analytics/Client/SendingPass.h"
#include "Application/Log/Analytics/Client/SendingState.h"
#include "Application/Log/Analytics/Items/ItemWrapper.h"
#include "Application/Log/Analytics/ServerConnection/DbToServerConnection.h"
#include "benchmarks/FilledDatabase.h"
#include "benchmarks/RawUpload.h"
#include "benchmarks/ServerProcess.h"
#include "benchmarks/Timing.h"
#include "benchmarks/Workload.h"
#include "host/QelHttp/Client.h"
#include "host/QelLog/LogManager.h"

namespace qel::benchmarks {
namespace {

using log::analytics::CipDatabaseClient;
using log::analytics::details::PackageBatch;
using log::analytics::details::SendingPass;
using log::analytics::details::SendingState;
using log::analytics::items::ItemWrapper;
using log::analytics::serverconnection::DbToServerConnection;
using RowMap = CipDatabaseClient::RowMap;

constexpr std::size_t packageSize = 1'000'000;
constexpr int packagesToUpload = 30;

/// The rows of a new database, in the form in which a sending pass keeps them in memory.
RowMap rowsOf(int count) { return FilledDatabase(count).client.getAllItems(); }

/// Packs the rows as a sending pass does, and calls `take` with the text of each package.
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

/// Uploads packages on a connection that is already open.
void upload(benchmark::State& state) {
  const ServerProcess server;
  protocol::https::Message message{.host = ServerProcess::host,
                                   .path = ServerProcess::path,
                                   .contentType = ServerProcess::contentType,
                                   .body = std::string(packageSize, 'x'),
                                   .user = {},
                                   .secret = {}};
  const auto post = [&] {
    expect(state, protocol::https::Client().post(message).statusCode == 204, "refused");
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

/// Sends all rows of a database on a new connection, and deletes them.
void pass(benchmark::State& state, int rows) {
  const ServerProcess server;
  const auto logger = log::LogManager::instance().getLogger("benchmark");
  for (auto _ : state) {
    FilledDatabase database(rows);
    DbToServerConnection connection;
    SendingState results;
    measure(state,
            [&] { SendingPass(database.client, connection, *logger, results, packageSize).run(); });
    expect(state, database.client.getAllItems().empty(), "rows are left");
  }
}
BENCHMARK_CAPTURE(pass, full, rowsOfFullDatabase)->Name("whole pass/ours")->Apply(once);

/// The limit of a whole pass: runs the limits of reading, packing, uploading and deleting one after
/// the other on the same rows.
void passLimit(benchmark::State& state) {
  const ServerProcess server;
  const auto packages = packagesOf(rowsOf(rowsOfFullDatabase));
  const auto statements = deleteStatements(rowsOfFullDatabase);
  for (auto _ : state) {
    FilledRawDatabase database(rowsOfFullDatabase);
    measure(state, [&] {
      RawUpload connection(server);
      benchmark::DoNotOptimize(database.raw.rows("Environments"));
      const auto rows = database.raw.rows("Items");
      for (const auto& package : packages) {
        copy(package);
        connection.post(package);
      }
      database.raw.runAll(statements);
    });
    expect(state, database.raw.rows("Items").empty(), "rows are left");
  }
}
BENCHMARK(passLimit)->Name("whole pass/limit")->Apply(once);

void growthOfPass(benchmark::State& state) { pass(state, static_cast<int>(state.range(0))); }
BENCHMARK(growthOfPass)->Name("growth/pass")->Apply(growing);

}  // namespace
}  // namespace qel::benchmarks
