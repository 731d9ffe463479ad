#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <CLI/CLI.hpp>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/Mutex.h"
#include "host/QelUtilities/PathText.h"
#include "tools/collector/Server.h"
#include "tools/collector/TemporaryStore.h"
#include "tools/common/Endpoint.h"
#include "tools/common/Program.h"

namespace {

using namespace qel;
using utilities::pathFromUtf8;

constexpr const char* programName = "qel-collector";

struct Options {
  std::string listen = "127.0.0.1:8443";
  std::vector<std::string> behind;
  std::string certificate;
  std::string key;
  std::string credentials;
  std::string store;
};

void logLine(int level, const std::string& message) {
  log::LogManager::instance().getLogger("qel.collector")->log(level, message);
}

/// Blocks SIGINT and SIGTERM in the calling thread and in all threads that it starts.
class StopSignals {
 public:
  StopSignals() {
    std::signal(SIGPIPE, SIG_IGN);
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

/// Ends the process if this object still exists after `stopTime`, because the disk or a client
/// holds it up. No package whose storage was confirmed is lost.
class StopDeadline {
 public:
  StopDeadline() = default;
  StopDeadline(const StopDeadline&) = delete;
  StopDeadline& operator=(const StopDeadline&) = delete;
  ~StopDeadline() {
    {
      const utilities::MutexLock lock(mutex_);
      isOver_ = true;
      over_.notifyOne();
    }
    thread_.join();
  }

 private:
  static constexpr std::chrono::milliseconds stopTime{4500};

  void watch() {
    utilities::MutexLock lock(mutex_);
    if (!over_.waitUntil(lock, std::chrono::steady_clock::now() + stopTime,
                         [this]() QEL_REQUIRES(mutex_) { return isOver_; })) {
      logLine(log::Level::Warning, "stopped before all requests were answered");
      log::LogManager::instance().flush(std::chrono::milliseconds(200));
      ::_exit(EXIT_SUCCESS);
    }
  }

  utilities::Mutex mutex_;
  utilities::Condition over_;
  bool isOver_ QEL_GUARDED_BY(mutex_) = false;
  std::thread thread_{[this] { watch(); }};
};

void serve(const Options& options, const StopSignals& signals) {
  std::optional<StopDeadline> deadline;  // ends after everything else
  tools::Endpoint endpoint = tools::parseEndpoint("--listen", options.listen, 0);
  const auto users = collector::Users::fromFile(pathFromUtf8(options.credentials));
  collector::TemporaryStore store(pathFromUtf8(options.store));
  const auto tls =
      collector::makeTlsContext(pathFromUtf8(options.certificate), pathFromUtf8(options.key));
  collector::StoreWriter writer(store, {});
  collector::Metrics metrics;
  collector::Server server({endpoint, options.behind}, users, tls, writer, metrics);
  endpoint.port = server.port();
  std::cout << "listening on " << tools::toText(endpoint) << '\n' << std::flush;
  logLine(log::Level::Info, "started, listening on " + tools::toText(endpoint));
  signals.wait();
  logLine(log::Level::Info, "stopping");
  deadline.emplace();
  server.stop();
}

int collect(const Options& options) {
  // Only the owner may read what customers send.
  ::umask(S_IRWXG | S_IRWXO);
  log::LogSettings logging;
  logging.lowestLevel = log::Level::Info;
  log::LogManager::instance().configure(logging);
  const StopSignals signals;
  serve(options, signals);
  logLine(log::Level::Info, "stopped");
  return EXIT_SUCCESS;
}

int run(const tools::Arguments& arguments) {
  Options options;
  CLI::App program("Receives analytics packages over HTTPS and stores them in an SQLite file.",
                   programName);
  program
      .add_option("--listen", options.listen,
                  "address to listen on; port 0 picks a free port and prints it")
      ->type_name("ADDRESS:PORT");
  program
      .add_option("--behind", options.behind,
                  "address of a load balancer, which sends a PROXY header (version 2); repeatable")
      ->allow_extra_args(false)
      ->type_name("ADDRESS");
  const auto addFile = [&](const char* name, std::string& file, const char* help) {
    program.add_option(name, file, help)->type_name("FILE")->required();
  };
  addFile("--certificate", options.certificate, "the server's certificate and its chain (PEM)");
  addFile("--key", options.key, "the certificate's private key (PEM)");
  addFile("--credentials", options.credentials, "allowed users, one user:secret per line");
  addFile("--store", options.store, "SQLite file for received data");
  return tools::readCommandLine(program, arguments) ? collect(options) : 0;
}

}  // namespace

int main(int count, char** values) { return tools::runProgram(programName, count, values, run); }
