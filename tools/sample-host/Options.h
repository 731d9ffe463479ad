#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include "host/QelId/Guid.h"
#include "tools/common/Program.h"

namespace qel::samplehost {

/// The options of one run.
struct Options {
  std::filesystem::path directory;  ///< existing directory of the databases
  std::string session = "-";        ///< script file (UTF-8); "-": standard input
  std::string serverName;           ///< host name in the certificate; empty: the one compiled in
  std::string server;               ///< "host:port" to connect to; empty: the server's own
  std::string caBundle;             ///< file of trusted certificates; empty: the system's
  std::string user;
  std::string secret;          ///< never printed
  std::string installationId;  ///< empty: the ID that the directory stores
  qel::Guid sessionId;
  bool sendingAllowed = true;
  bool supportAllowed = true;
  bool onlyChecksConnection = false;              ///< plays no session
  std::optional<std::chrono::seconds> retention;  ///< of support rows; empty: unlimited
  double speed = 1;                               ///< the script's waits are divided by it
  std::chrono::milliseconds exitDeadline{0};
};

/// Reads the program's arguments, and the secret from its file. Returns `std::nullopt` if it has
/// printed the help text or the version. Throws `tools::InputError` if the arguments are invalid.
std::optional<Options> readOptions(const tools::Arguments& arguments);

}  // namespace qel::samplehost
