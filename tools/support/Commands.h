#pragma once

#include <filesystem>
#include <string>

#include "host/QelUtilities/PathText.h"
#include "tools/support/Terminal.h"

namespace qel::support {

inline constexpr const char* programName = "qel-support";

/// The arguments of the command. Those that the user did not give are empty or false.
struct Arguments {
  std::string place;
  std::string session;
  std::string category;
  std::string since;
  std::string until;
  std::string search;
  std::string to;
  std::string output;
  bool json = false;
  bool localTime = false;
  bool follow = false;
  bool yes = false;

  std::filesystem::path path() const { return utilities::pathFromUtf8(place); }
  report::Zone zone() const { return localTime ? report::Zone::Local : report::Zone::Utc; }
  Terminal terminal() const {
    auto terminal = Terminal::ofStandardOutput();
    terminal.zone = zone();
    return terminal;
  }
};

/// The commands. Each returns the program's exit status, and throws `tools::InputError` for invalid
/// arguments and `qel::exception` for other failures.
/// @{
int showSessions(const Arguments& arguments);
int showSession(const Arguments& arguments);
int showStatistics(const Arguments& arguments);
int exportOne(const Arguments& arguments);
int report(const Arguments& arguments);
int removeAll(const Arguments& arguments);
/// @}

}  // namespace qel::support
