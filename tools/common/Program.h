#pragma once

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace qel::tools {

/// Adds `--help` and `--version` to `program` and its commands, then parses `main`'s arguments into
/// the bound variables. Returns false if it has printed the help text or the version. Throws
/// `InputError` for invalid arguments, including an option that is repeated or lacks its value.
bool readCommandLine(CLI::App& program, int count, const char* const* values);

/// Calls `body` and returns its exit status. If `body` throws, prints the message as one line on
/// standard error. The status is then 2 for an `InputError` and 1 for any other exception.
int runProgram(const std::string& name, const std::function<int()>& body);

}  // namespace qel::tools
