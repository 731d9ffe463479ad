#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include "host/QelId/Guid.h"

namespace qel::samplehost {

/// What the user asks of one run.
struct Options {
  std::filesystem::path directory;  ///< of the databases; it exists
  std::string session = "-";        ///< script file (UTF-8); "-": standard input
  std::string server;               ///< "host:port" that stands in for the server; empty: none
  std::string caBundle;             ///< trusted certificates; empty: the system's
  std::string user;
  std::string secret;          ///< never printed
  std::string installationId;  ///< empty: the directory's own
  qel::Guid sessionId;
  bool sendingAllowed = true;
  bool supportAllowed = true;
  std::optional<std::chrono::seconds> retention;  ///< of the support database; none: for ever
  double speed = 1;                               ///< what the script's waits are divided by
  std::chrono::duration<double> exitDeadline{0};
};

/// Reads `main`'s arguments, and the secret from its file. Nothing when help or version was asked
/// for, which is then printed. Throws `tools::InputError` otherwise.
std::optional<Options> readOptions(int count, const char* const* values);

}  // namespace qel::samplehost
