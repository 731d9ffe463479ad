#pragma once

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace qel::tools {

/// Adds `--help` and `--version` to `program` and its commands, then reads `main`'s arguments into
/// the bound variables. Returns false after it has printed help or version. Throws `InputError` for
/// invalid arguments, also for an option that is given twice or without its value.
bool readCommandLine(CLI::App& program, int count, const char* const* values);

/// Calls `body` and returns its exit status. An exception becomes one line on standard error; the
/// status is 2 for an `InputError` and 1 for any other exception.
int runProgram(const std::string& name, const std::function<int()>& body);

}  // namespace qel::tools
