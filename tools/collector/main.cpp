#include <csignal>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include <pthread.h>
#include <sys/stat.h>

#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/ScopeGuard.h"
#include "tools/collector/Credentials.h"
#include "tools/collector/Server.h"
#include "tools/collector/Store.h"
#include "tools/common/CommandLine.h"

namespace {

using namespace qel;
using tools::Option;

const tools::ProgramDescription program{
    "qel-collector",
    "Receives analytics packages over HTTPS and stores them in an SQLite file.",
    {{"listen", "ADDRESS:PORT", "where to listen; port 0 picks a free one and prints it",
      Option::Presence::Optional, "127.0.0.1:8443"},
     {"certificate", "FILE", "the server's certificate and its chain (PEM)",
      Option::Presence::Required},
     {"key", "FILE", "the certificate's private key (PEM)", Option::Presence::Required},
     {"credentials", "FILE", "who may send: lines user:secret", Option::Presence::Required},
     {"store", "FILE", "what was received (SQLite)", Option::Presence::Required}}};

/// SIGINT and SIGTERM, held back for every thread that is started later.
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

int collect(const tools::Arguments& arguments) {
  const auto file = [&](const char* option) {
    return utilities::pathFromUtf8(arguments.text(option));
  };
  // What customers send is for the owner's eyes alone.
  ::umask(S_IRWXG | S_IRWXO);
  log::LogSettings logging;
  logging.lowestLevel = log::Level::Info;
  log::LogManager::instance().configure(logging);
  const StopSignals signals;
  tools::Endpoint endpoint = arguments.endpoint("listen", 0);
  auto credentials = collector::Credentials::fromFile(file("credentials"));
  collector::Store store(file("store"));
  collector::Server server({endpoint, file("certificate"), file("key")}, std::move(credentials),
                           store);
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

}  // namespace

int main(int count, char** values) {
  return tools::runProgram(program.name, [&] {
    const auto arguments = tools::parseCommandLine(
        program, std::vector<std::string>(values + 1, values + count), std::cout);
    return arguments ? collect(*arguments) : 0;
  });
}
