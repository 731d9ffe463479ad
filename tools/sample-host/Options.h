#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include "host/QelId/Guid.h"

namespace qel::samplehost {

/// The options of one run.
struct Options {
  std::filesystem::path directory;  ///< of the databases; exists
  std::string session = "-";        ///< script file (UTF-8); "-": standard input
  std::string server;               ///< "host:port" to use for the server; empty: its own
  std::string caBundle;             ///< trusted certificates; empty: the system's
  std::string user;
  std::string secret;          ///< never printed
  std::string installationId;  ///< empty: the id of the directory
  qel::Guid sessionId;
  bool sendingAllowed = true;
  bool supportAllowed = true;
  std::optional<std::chrono::seconds> retention;  ///< of the support database; none: unlimited
  double speed = 1;                               ///< divides the script's waits
  std::chrono::duration<double> exitDeadline{0};
};

/// Reads the arguments of `main`, and the secret from its file. Prints help or version if asked to,
/// and returns nothing then. Throws `tools::InputError` if the arguments are wrong.
std::optional<Options> readOptions(int count, const char* const* values);

}  // namespace qel::samplehost
