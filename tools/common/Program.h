#pragma once

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace qel::tools {

/// The arguments of a program, in UTF-8, without the program's name.
using Arguments = std::vector<std::string>;

/// Adds `--help` and `--version` to `program` and its commands, then parses the arguments into the
/// bound variables. Returns false if it has printed the help text or the version. Throws
/// `InputError` for invalid arguments, including an option that is repeated or lacks its value.
bool readCommandLine(CLI::App& program, const Arguments& arguments);

/// Calls `body` with `main`'s arguments and returns its exit status. If `body` throws, prints the
/// message as one line on standard error. The status is then 2 for an `InputError` and 1 for any
/// other exception.
int runProgram(const std::string& name, int count, const char* const* values,
               const std::function<int(const Arguments&)>& body);

}  // namespace qel::tools
