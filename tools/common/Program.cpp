#include "tools/common/Program.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <optional>

#include <CLI/CLI.hpp>

#include "tools/common/InputError.h"
#include "tools/common/Utf8Interface.h"

namespace qel::tools {
namespace {

std::string complaintAboutValue(const std::string& value) {
  return value.empty() || value.starts_with("--") ? "a value is missing" : "";
}

std::string complaintAboutFlag(const std::string& value) {
  return value == "true" ? "" : "takes no value";
}

void complete(CLI::App& program, const std::string& version) {
  for (CLI::Option* option : program.get_options({})) {
    const bool flag = option->get_items_expected_max() == 0;
    option->check(flag ? complaintAboutFlag : complaintAboutValue)
        ->multi_option_policy(option->get_expected_max() > 1 ? CLI::MultiOptionPolicy::TakeAll
                                                             : CLI::MultiOptionPolicy::Throw)
        ->capture_default_str();
  }
  program.allow_windows_style_options(false);  // "/x" may be a path.
  program.set_help_flag("--help", "print this text");
  program.set_version_flag("--version", version, "print the program's version");
  for (CLI::App* command : program.get_subcommands({})) {
    complete(*command, version);
  }
}

/// Without this check, CLI11 would use the next argument as the value of `--name=`.
void refuseEmptyValue(const std::string& argument) {
  if (argument.starts_with("--") && argument.find('=') + 1 == argument.size()) {
    throw InputError(argument + ": a value is missing");
  }
}

/// CLI11's message, without the placeholder that it has for a missing value.
std::string withoutPlaceholder(const std::string& message) {
  const auto place = message.find(": 1 required ");
  const bool isMissing = place != std::string::npos && message.ends_with(" missing");
  return isMissing ? message.substr(0, place) + ": a value is missing" : message;
}

/// The first unknown argument, without its value because the value may be secret.
std::optional<std::string> firstUnexpected(const CLI::App& program) {
  for (const std::string& argument : program.remaining(true)) {
    if (argument != "--") {
      return argument.substr(0, argument.find('='));
    }
  }
  return std::nullopt;
}

}  // namespace

bool readCommandLine(CLI::App& program, const Arguments& arguments) {
  complete(program, program.get_name() + " " QEL_VERSION);
  std::for_each(arguments.begin(), arguments.end(), refuseEmptyValue);
  try {
    program.parse(Arguments(arguments.rbegin(), arguments.rend()));  // CLI11 takes the last first
    return true;
  } catch (const CLI::Success& request) {
    program.exit(request);
    return false;
  } catch (const CLI::ValidationError& error) {
    throw InputError(error.what());
  } catch (const CLI::ParseError& error) {
    const auto unexpected = firstUnexpected(program);
    throw InputError(unexpected ? "unexpected argument \"" + *unexpected +
                                      "\" (--help lists what there is)"
                                : withoutPlaceholder(error.what()));
  }
}

int runProgram(const std::string& name, int count, const char* const* values,
               const std::function<int(const Arguments&)>& body) {
  const Utf8Streams streams;
  const auto failed = [&](const std::string& message, int status) {
    std::cerr << name + ": " + message + '\n' << std::flush;
    return status;
  };
  try {
    return body(utf8Arguments(count, values));
  } catch (const InputError& error) {
    return failed(error.what(), 2);
  } catch (const std::exception& error) {
    return failed(error.what(), 1);
  } catch (...) {
    return failed("unknown failure", 1);
  }
}

}  // namespace qel::tools
