#pragma once

#include <functional>
#include <sstream>
#include <string>

#include "tests/support/Process.h"

namespace qel::test {

struct Outcome {
  std::string output;
  int status;
  std::string errors;
};

/// What a shell's command says.
inline Outcome outcomeOf(const std::string& command) {
  Process program(command);
  return {program.readUntil(EOF), program.join(), program.errors()};
}

/// A transcript's commands ("$ command") and what they say today, which is the transcript itself
/// while nothing has changed.
inline std::string replay(const std::string& transcript,
                          const std::function<Outcome(const std::string&)>& run) {
  std::istringstream lines(transcript);
  std::string today;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("$ ")) {
      const auto [output, status, errors] = run(line.substr(2));
      today += line + '\n' + output + errors;
      today += status == 0 ? "" : "exit status " + std::to_string(status) + '\n';
    }
  }
  return today;
}

}  // namespace qel::test
