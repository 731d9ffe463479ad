#include "tools/common/CommandLine.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <iostream>
#include <sstream>
#include <string_view>
#include <utility>

namespace qel::tools {
namespace {

const Option helpOption{"help", "", "prints this text"};
const Option versionOption{"version", "", "prints the program's version"};

std::vector<Option> allOptions(const ProgramDescription& program) {
  std::vector<Option> options = program.options;
  options.push_back(helpOption);
  options.push_back(versionOption);
  return options;
}

std::string nameAndValue(const Option& option) {
  return "--" + option.name + (option.valueName.empty() ? "" : " " + option.valueName);
}

void printHelp(const ProgramDescription& program, std::ostream& output) {
  const auto options = allOptions(program);
  std::size_t width = 0;
  for (const Option& option : options) {
    width = std::max(width, nameAndValue(option).size());
  }
  const auto printName = [&](const std::string& left) {
    output << "  " << left << std::string(width - left.size() + 2, ' ');
  };
  output << "Usage: " << program.name;
  for (const Operand& operand : program.operands) {
    output << ' ' << operand.name;
  }
  output << " [options]\n" << program.summary << "\n\n";
  for (const Operand& operand : program.operands) {
    printName(operand.name);
    output << operand.help << '\n';
  }
  for (const Option& option : options) {
    printName(nameAndValue(option));
    output << option.help;
    if (option.presence == Option::Presence::Required) {
      output << " (required)";
    } else if (!option.standard.empty()) {
      output << " (default: " << option.standard << ')';
    }
    output << '\n';
  }
}

const Option& findOption(const std::vector<Option>& options, const std::string& name) {
  const auto found = std::find_if(options.begin(), options.end(),
                                  [&](const Option& option) { return option.name == name; });
  if (found == options.end()) {
    throw InputError("unknown option --" + name + " (--help lists the options)");
  }
  return *found;
}

/// The value of the option at `position`, which moves on to the value when that stands by itself.
std::string valueOf(const Option& option, const std::vector<std::string>& arguments,
                    std::size_t& position) {
  const std::string& argument = arguments[position];
  const auto equals = argument.find('=');
  if (option.valueName.empty()) {
    if (equals != std::string::npos) {
      throw InputError("--" + option.name + " takes no value");
    }
    return {};
  }
  std::string value;
  if (equals != std::string::npos) {
    value = argument.substr(equals + 1);
  } else if (position + 1 < arguments.size() && arguments[position + 1].rfind("--", 0) != 0) {
    value = arguments[++position];
  }
  if (value.empty()) {
    throw InputError("--" + option.name + " needs a value: " + nameAndValue(option));
  }
  return value;
}

void completeWithStandards(const ProgramDescription& program,
                           std::map<std::string, std::string>& values) {
  for (const Operand& operand : program.operands) {
    if (values.count(operand.name) == 0) {
      throw InputError(operand.name + " is missing (--help tells what it is)");
    }
  }
  for (const Option& option : program.options) {
    if (!option.standard.empty()) {
      values.emplace(option.name, option.standard);
    }
    if (option.presence == Option::Presence::Required && values.count(option.name) == 0) {
      throw InputError(nameAndValue(option) + " is required");
    }
  }
}

template <typename Number>
std::optional<Number> parse(std::string_view text) {
  Number number{};
  const auto end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stopped == end ? std::optional(number) : std::nullopt;
}

template <typename Number>
Number parseWithin(const std::string& name, const std::string& text, Number lowest, Number highest,
                   const char* kind) {
  const auto number = parse<Number>(text);
  if (!number || !(*number >= lowest && *number <= highest)) {
    std::ostringstream message;
    message << "--" << name << ": \"" << text << "\" is not " << kind << " from " << lowest
            << " to " << highest;
    throw InputError(message.str());
  }
  return *number;
}

}  // namespace

std::string toText(const Endpoint& endpoint) {
  const bool bracketed = endpoint.host.find(':') != std::string::npos;
  return (bracketed ? '[' + endpoint.host + ']' : endpoint.host) + ':' +
         std::to_string(endpoint.port);
}

std::string Arguments::text(const std::string& name) const {
  const auto found = values_.find(name);
  return found == values_.end() ? std::string() : found->second;
}

long long Arguments::integer(const std::string& name, long long lowest, long long highest) const {
  return parseWithin(name, text(name), lowest, highest, "a whole number");
}

double Arguments::number(const std::string& name, double lowest, double highest) const {
  return parseWithin(name, text(name), lowest, highest, "a number");
}

Endpoint Arguments::endpoint(const std::string& name, std::uint16_t lowestPort) const {
  const std::string value = text(name);
  const auto colon = value.rfind(':');
  std::string host = value.substr(0, colon);
  const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
  if (bracketed) {
    host = host.substr(1, host.size() - 2);
  }
  if (colon == std::string::npos || host.empty() ||
      (!bracketed && host.find_first_of(":[]") != std::string::npos)) {
    throw InputError("--" + name + ": \"" + value + "\" is not of the form HOST:PORT");
  }
  constexpr std::uint16_t highestPort = 65535;
  return {host, parseWithin(name, value.substr(colon + 1), lowestPort, highestPort, "a port")};
}

std::optional<Arguments> parseCommandLine(const ProgramDescription& program,
                                          const std::vector<std::string>& arguments,
                                          std::ostream& output) {
  const auto options = allOptions(program);
  std::map<std::string, std::string> values;
  auto operand = program.operands.begin();
  for (std::size_t position = 0; position < arguments.size(); ++position) {
    const std::string& argument = arguments[position];
    if (argument.rfind('-', 0) != 0 && operand != program.operands.end()) {
      values.emplace(operand++->name, argument);
      continue;
    }
    if (argument.rfind("--", 0) != 0) {
      throw InputError("unexpected argument \"" + argument + "\" (--help lists the options)");
    }
    const Option& option = findOption(options, argument.substr(2, argument.find('=') - 2));
    if (!values.emplace(option.name, valueOf(option, arguments, position)).second) {
      throw InputError("--" + option.name + " is given twice");
    }
    if (option.name == helpOption.name) {
      printHelp(program, output);
      return std::nullopt;
    }
    if (option.name == versionOption.name) {
      output << program.name << ' ' << QEL_VERSION << '\n';
      return std::nullopt;
    }
  }
  completeWithStandards(program, values);
  return Arguments(std::move(values));
}

int runProgram(const std::string& name, const std::function<int()>& body) {
  const auto failed = [&](const std::string& message, int status) {
    std::cerr << name + ": " + message + '\n' << std::flush;
    return status;
  };
  try {
    return body();
  } catch (const InputError& error) {
    return failed(error.what(), 2);
  } catch (const std::exception& error) {
    return failed(error.what(), 1);
  } catch (...) {
    return failed("unknown failure", 1);
  }
}

}  // namespace qel::tools
