#include <csignal>
#include <iostream>
#include <string>
#include <thread>

#include <CLI/CLI.hpp>
#include <pthread.h>
#include <sys/stat.h>

#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/ScopeGuard.h"
#include "tools/collector/Credentials.h"
#include "tools/collector/EraseCommand.h"
#include "tools/collector/Server.h"
#include "tools/collector/SqliteStore.h"
#include "tools/collector/StoreWriter.h"
#include "tools/common/Endpoint.h"
#include "tools/common/Program.h"

namespace {

using namespace qel;
using utilities::pathFromUtf8;

constexpr const char* programName = "qel-collector";

struct Options {
  std::string listen = "127.0.0.1:8443";
  std::string certificate;
  std::string key;
  std::string credentials;
  std::string store;
};

/// Blocks SIGINT and SIGTERM in the calling thread and in all threads that it starts.
class StopSignals {
 public:
  StopSignals() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGINT);
    sigaddset(&signals_, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
  }

  void wait() const {
    int signal = 0;
    sigwait(&signals_, &signal);
  }

 private:
  sigset_t signals_{};
};

int collect(const Options& options) {
  // Only the owner may read what customers send.
  ::umask(S_IRWXG | S_IRWXO);
  log::LogSettings logging;
  logging.lowestLevel = log::Level::Info;
  log::LogManager::instance().configure(logging);
  const StopSignals signals;
  tools::Endpoint endpoint = tools::parseEndpoint("--listen", options.listen, 0);
  auto credentials = collector::Credentials::fromFile(pathFromUtf8(options.credentials));
  collector::SqliteStore store(pathFromUtf8(options.store));
  collector::StoreWriter writer(store, {});
  collector::Server server({endpoint, pathFromUtf8(options.certificate), pathFromUtf8(options.key)},
                           std::move(credentials), writer);
  endpoint.port = static_cast<std::uint16_t>(server.bind());

  std::thread stopper;
  const ScopeGuard joinStopper([&] {
    if (stopper.joinable()) {
      pthread_kill(stopper.native_handle(), SIGINT);
      stopper.join();
    }
  });
  server.run([&] {
    std::cout << "listening on " << tools::toText(endpoint) << '\n' << std::flush;
    stopper = std::thread([&] {
      signals.wait();
      server.stop();
    });
  });
  return 0;
}

int run(const tools::Arguments& arguments) {
  Options options;
  collector::EraseOptions eraseOptions;
  const bool erases = !arguments.empty() && arguments.front() == "erase";
  CLI::App program("Receives analytics packages over HTTPS and stores them in an SQLite file.",
                   programName);
  program
      .add_option("--listen", options.listen,
                  "address to listen on; port 0 picks a free port and prints it")
      ->type_name("ADDRESS:PORT");
  const auto addFile = [&](const char* name, std::string& file, const char* help) {
    program.add_option(name, file, help)->type_name("FILE")->required(!erases);
  };
  addFile("--certificate", options.certificate, "the server's certificate and its chain (PEM)");
  addFile("--key", options.key, "the certificate's private key (PEM)");
  addFile("--credentials", options.credentials, "allowed users, one user:secret per line");
  addFile("--store", options.store, "SQLite file for received data");
  collector::addEraseCommand(program, eraseOptions);
  if (!tools::readCommandLine(program, arguments)) {
    return 0;
  }
  return erases ? collector::erase(eraseOptions) : collect(options);
}

}  // namespace

int main(int count, char** values) { return tools::runProgram(programName, count, values, run); }
