#include <cstdlib>
#include <string>

#include <CLI/CLI.hpp>

#include "tools/collector/Collector.h"
#include "tools/collector/EraseCommand.h"
#include "tools/collector/ImportCommand.h"
#include "tools/common/Program.h"

namespace {

using namespace qel;

constexpr const char* programName = "qel-collector";

/// `CLI::PositiveNumber` prints the largest number in all its digits.
CLI::Validator positive() {
  const auto objection = [](const std::string& text) {
    return CLI::PositiveNumber(text).empty() ? "" : "must be positive";
  };
  return {objection, ""};
}

void addBatchOptions(CLI::App& program, collector::CollectorOptions& options) {
  program
      .add_option("--batch-time", options.batchMilliseconds,
                  "how long a package waits for others, which ClickHouse stores with it (500)")
      ->check(CLI::Range(200, 1000))
      ->type_name("MILLISECONDS");
  program
      .add_option("--batch-rows", options.batchRows,
                  "how many waiting rows ClickHouse stores without more waiting (30000)")
      ->check(CLI::Range(1, 1'000'000))
      ->type_name("NUMBER");
}

void addUserLimits(CLI::App& program, collector::UserLimits& limits) {
  program
      .add_option("--user-requests", limits.requestsPerSecond,
                  "requests a second that a user may send, averaged over a minute")
      ->check(positive())
      ->type_name("NUMBER");
  program
      .add_option("--user-bytes", limits.bytesPerSecond,
                  "bytes a second that a user may send, averaged over a minute")
      ->check(positive())
      ->type_name("NUMBER");
}

void addOptions(CLI::App& program, collector::CollectorOptions& options, bool areRequired) {
  program
      .add_option("--listen", options.listen,
                  "address to listen on; port 0 picks a free port and prints it")
      ->type_name("ADDRESS:PORT");
  program
      .add_option("--admin", options.admin,
                  "address for /health, /ready and /metrics over plain HTTP, and for the page")
      ->type_name("ADDRESS:PORT");
  program
      .add_option("--readers", options.readers,
                  "who may read the page over HTTPS, one user:secret per line; needs --admin")
      ->type_name("FILE");
  program
      .add_option("--behind", options.behind,
                  "address of a load balancer, which sends a PROXY header (version 2); repeatable")
      ->allow_extra_args(false)
      ->type_name("ADDRESS");
  const auto addFile = [&](const char* name, std::string& file, const char* help) {
    program.add_option(name, file, help)->type_name("FILE")->required(areRequired);
  };
  addFile("--certificate", options.certificate, "the server's certificate and its chain (PEM)");
  addFile("--key", options.key, "the certificate's private key (PEM)");
  addFile("--credentials", options.credentials, "allowed users, one user:secret per line");
  collector::addStoreOptions(program, options.store, areRequired);
  collector::addCreateOption(program, options.store);
  addBatchOptions(program, options);
  program
      .add_option("--retention", options.retentionDays,
                  "delete rows that were received more than this number of days ago")
      ->check(CLI::Range(1, 36500))
      ->type_name("DAYS");
  addUserLimits(program, options.userLimits);
}

int run(const tools::Arguments& arguments) {
  collector::CollectorOptions options;
  collector::EraseOptions eraseOptions;
  collector::ImportOptions importOptions;
  const std::string command = arguments.empty() ? "" : arguments.front();
  const bool collects = command != "erase" && command != "import";
  CLI::App program(
      "Receives analytics packages over HTTPS and stores them in an SQLite file or in ClickHouse.",
      programName);
  addOptions(program, options, collects);
  collector::addEraseCommand(program, eraseOptions);
  collector::addImportCommand(program, importOptions);
  if (!tools::readCommandLine(program, arguments)) {
    return EXIT_SUCCESS;
  }
  if (!collects) {
    return command == "erase" ? collector::erase(eraseOptions)
                              : collector::importStore(importOptions);
  }
  collector::collect(options);
  return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char** values) { return tools::runProgram(programName, count, values, run); }
