// Sends realistic packages to a collector, or to another HTTPS server, and prints figures as JSON.

#include <algorithm>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <sys/resource.h>

#include "benchmarks/collector/Load.h"
#include "benchmarks/collector/RawStore.h"
#include "host/QelUtilities/Exception.h"
#include "tools/collector/ApiText.h"
#include "tools/collector/OpenStore.h"
#include "tools/common/Program.h"

namespace {

using namespace qel;
using namespace qel::benchmarks;

constexpr std::size_t otherFiles = 32;

/// Raises the limit of open files as far as needed.
void allowConnections(std::size_t connections) {
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  const rlim_t needed = connections + otherFiles;
  if (limit.rlim_cur < needed) {
    limit.rlim_cur = needed;
    limit.rlim_max = std::max(limit.rlim_max, needed);
    if (::setrlimit(RLIMIT_NOFILE, &limit) != 0) {
      throw qel::exception(std::to_string(connections) + " connections need " +
                           std::to_string(needed) + " open files: raise the limit with ulimit -n");
    }
  }
}

double processorSeconds() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Null if there are no values.
nlohmann::json percentile(const std::vector<float>& sorted, double share) {
  if (sorted.empty()) {
    return nullptr;
  }
  const auto index = static_cast<std::size_t>(share * static_cast<double>(sorted.size()));
  return static_cast<double>(sorted[std::min(index, sorted.size() - 1)]);
}

void printLoad(const LoadSettings& settings) {
  LoadResult result = load(settings);
  std::sort(result.milliseconds.begin(), result.milliseconds.end());
  const double seconds = settings.duration.count();
  const double rate = static_cast<double>(result.answeredInTime) / seconds;
  const nlohmann::ordered_json figures{
      {"packages", result.stored},
      {"rows", result.stored * settings.rows},
      {"packages per second", rate},
      {"rows per second", rate * static_cast<double>(settings.rows)},
      {"bytes per second", static_cast<double>(result.bytesInTime) / seconds},
      {"p50", percentile(result.milliseconds, 0.5)},
      {"p99", percentile(result.milliseconds, 0.99)},
      {"longest", percentile(result.milliseconds, 1)},
      {"failures", result.failures},
      {"cores of the load", processorSeconds() / seconds}};
  std::cout << figures << std::endl;
}

void printRawStore(const std::string& store, std::uint64_t rows, std::size_t rowsOfPackage,
                   std::size_t packages) {
  const RawStoreResult result = fillRawStore(store, rows, rowsOfPackage, packages);
  const nlohmann::ordered_json figures{
      {"rows", result.rows},
      {"rows per second", static_cast<double>(result.rows) / result.seconds}};
  std::cout << figures << std::endl;
}

/// Prints the answer of each figure of the overview, and its milliseconds in each round.
void printFigures(const collector::StoreOptions& store, const collector::Filter& filter,
                  std::size_t rounds) {
  using std::chrono::steady_clock;
  const auto reader = collector::openReader(store, collector::clickHouseAccess(store));
  nlohmann::ordered_json figures;
  for (std::size_t round = 0; round < rounds; ++round) {
    for (const char* const name : {"events-by-day", "installations-by-day", "installations-by-week",
                                   "versions", "crashes", "commands", "memory"}) {
      const auto begin = steady_clock::now();
      const auto table = reader->read(name, filter, begin + std::chrono::minutes(10));
      const std::chrono::duration<double, std::milli> time = steady_clock::now() - begin;
      figures[name]["ms"].push_back(time.count());
      figures[name]["rows"] =
          nlohmann::json::parse(collector::jsonPage(name, table).text).at("rows");
    }
  }
  std::cout << figures << std::endl;
}

struct Options {
  LoadSettings load;
  std::string connect;
  std::string secretFile;
  double seconds = 10;
  double warmUp = 0;
  double interval = 0;
  std::string store;
  std::uint64_t storedRows = 1'000'000;
  std::size_t packages = 16;
  collector::StoreOptions readStore;
  collector::Filter filter;
  std::size_t rounds = 5;
};

void addServerOptions(CLI::App& command, Options& options) {
  command.add_option("--connect", options.connect, "the server")->required();
  command.add_option("--host", options.load.host, "the name in its certificate")->required();
  command.add_option("--connections", options.load.connections, "clients")->required();
  command.add_option("--seconds", options.seconds, "duration");
}

void addSendOptions(CLI::App& command, Options& options) {
  addServerOptions(command, options);
  command.add_option("--user", options.load.user, "user, or its beginning")->required();
  command.add_option("--users", options.load.users, "clients take turns with USER0, USER1, ...");
  command.add_option("--secret-file", options.secretFile, "file with the secret")->required();
  command.add_option("--rows", options.load.rows, "rows of a package");
  command.add_option("--earlier-rows", options.load.earlierRows,
                     "rows of the store: the days continue after theirs");
  command.add_option("--interval", options.interval, "seconds between a client's packages");
  command.add_option("--warm-up", options.warmUp, "seconds before the time is measured");
  command.add_flag("--fresh", options.load.fresh, "a new connection for each package");
  command.add_flag("--resend", options.load.resend, "send each package until it is stored");
}

void addStoreOptions(CLI::App& command, Options& options) {
  command.add_option("--store", options.store, "a store that the collector has made")->required();
  command.add_option("--stored-rows", options.storedRows, "rows to add");
  command.add_option("--rows", options.load.rows, "rows of a package");
  command.add_option("--packages", options.packages, "packages of a transaction");
}

void addFigureOptions(CLI::App& command, Options& options) {
  collector::addStoreOptions(command, options.readStore, true);
  command.add_option("--rounds", options.rounds, "how often each figure is read");
  command.add_option("--from", options.filter.from, "first day");
  command.add_option("--program-version", options.filter.version, "version of the program");
  command.add_option("--installation", options.filter.installation, "one installation");
}

void complete(Options& options) {
  options.load.server = tools::parseEndpoint("--connect", options.connect, 1);
  std::ifstream secret(options.secretFile);
  std::getline(secret, options.load.secret);
  options.load.duration = std::chrono::duration<double>(options.seconds);
  options.load.warmUp = std::chrono::duration<double>(options.warmUp);
  if (options.interval > 0) {
    options.load.interval = std::chrono::duration<double>(options.interval);
  }
  allowConnections(options.load.connections);
}

int run(const tools::Arguments& arguments) {
  Options options;
  CLI::App program("Loads a collector.", "QelCollectorLoad");
  program.require_subcommand(1);
  auto* send = program.add_subcommand("send", "sends packages and prints figures as JSON");
  auto* silent = program.add_subcommand("silent", "keeps TLS connections and sends nothing");
  auto* store = program.add_subcommand("store", "adds rows to a store with SQLite alone");
  auto* figures = program.add_subcommand("figures", "reads the figures of the overview");
  addSendOptions(*send, options);
  addServerOptions(*silent, options);
  addStoreOptions(*store, options);
  addFigureOptions(*figures, options);
  if (!tools::readCommandLine(program, arguments)) {
    return 0;
  }
  if (store->parsed()) {
    printRawStore(options.store, options.storedRows, options.load.rows, options.packages);
    return 0;
  }
  if (figures->parsed()) {
    printFigures(options.readStore, options.filter, options.rounds);
    return 0;
  }
  complete(options);
  if (send->parsed()) {
    printLoad(options.load);
  } else {
    keepSilent(options.load);
  }
  return 0;
}

}  // namespace

int main(int count, char** values) {
  return tools::runProgram("QelCollectorLoad", count, values, run);
}
