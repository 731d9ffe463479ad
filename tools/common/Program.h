#pragma once

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace qel::tools {

/// Reads `main`'s arguments into what `program` and its commands have bound, after adding `--help`
/// and `--version` to each. Prints what these ask for and then returns false. Throws `InputError`
/// for all that the library refuses, and for an option that is given twice or without its value.
bool readCommandLine(CLI::App& program, int count, const char* const* values);

/// Calls `body` and returns its exit status; an exception becomes one line on standard error and
/// status 2 for an `InputError`, 1 for anything else.
int runProgram(const std::string& name, const std::function<int()>& body);

}  // namespace qel::tools
