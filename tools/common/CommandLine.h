#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/QelUtilities/Exception.h"

namespace qel::tools {

/// What the user gave a program is wrong; the message names the option, or the file and line.
class InputError : public qel::exception {
 public:
  using qel::exception::exception;
};

/// One long option: `--name VALUE` or `--name=VALUE`, or a flag `--name`.
struct Option {
  enum class Presence { Optional, Required };

  std::string name;       ///< without the dashes
  std::string valueName;  ///< as the help text shows it; empty for a flag
  std::string help;
  Presence presence = Presence::Optional;
  std::string standard = {};  ///< the value when the option is not given; empty: none
};

/// An argument told by its place, which has to be given.
struct Operand {
  std::string name;  ///< as the help text shows it, and as `Arguments` knows it
  std::string help;
};

/// What a program takes. `--help` and `--version` need not be listed.
struct ProgramDescription {
  std::string name;
  std::string summary;
  std::vector<Option> options;
  std::vector<Operand> operands = {};
};

/// Where a server is or listens.
struct Endpoint {
  std::string host;  ///< name or address, an IPv6 address without its brackets
  std::uint16_t port = 0;
};

/// `HOST:PORT`, `[IPv6]:PORT`.
std::string toText(const Endpoint& endpoint);

/// The options and operands of one run. Each reading operation takes an option's name without the
/// dashes, or an operand's, and throws `InputError` when the value is not of the kind asked for.
class Arguments {
 public:
  explicit Arguments(std::map<std::string, std::string> values) : values_(std::move(values)) {}

  /// Whether the option was given or has a standard value.
  bool has(const std::string& name) const { return values_.count(name) != 0; }
  /// The option's value; empty when there is none.
  std::string text(const std::string& name) const;
  /// The remaining readers are for options that are required, have a standard value, or `has`.
  long long integer(const std::string& name, long long lowest, long long highest) const;
  double number(const std::string& name, double lowest, double highest) const;
  Endpoint endpoint(const std::string& name, std::uint16_t lowestPort) const;

 private:
  std::map<std::string, std::string> values_;
};

/// Reads the arguments behind the program's own name. Prints what `--help` or `--version` asks for
/// to `output` and then returns nothing. Throws `InputError` for an unknown option, one given
/// twice, a missing or empty value, a missing required option or operand, and anything that is
/// neither.
std::optional<Arguments> parseCommandLine(const ProgramDescription& program,
                                          const std::vector<std::string>& arguments,
                                          std::ostream& output);

/// Calls `body` and returns its exit status; an exception becomes one line on standard error and
/// status 2 for an `InputError`, 1 for anything else.
int runProgram(const std::string& name, const std::function<int()>& body);

}  // namespace qel::tools
