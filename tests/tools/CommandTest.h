#pragma once

#include <cstdlib>
#include <sstream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tests/support/Process.h"

namespace qel::test {

struct Outcome {
  std::string output;
  int status;
  std::string errors;
};

/// Runs commands of a shell in which $DIR and $OUT are two directories, empty at first, and $TESTS
/// is this folder. The programs of this build are found by their names.
class CommandTest : public testing::Test {
 protected:
  CommandTest() {
    setenv("DIR", directory_.text().c_str(), 1);
    setenv("OUT", other_.text().c_str(), 1);
    setenv("TESTS", QEL_TOOLS_TESTS, 1);
    setenv("PATH", (QEL_PROGRAMS ":" + std::string(getenv("PATH"))).c_str(), 1);
  }

  std::filesystem::path file(const std::string& name) const { return directory_.path() / name; }
  std::filesystem::path elsewhere(const std::string& name) const { return other_.path() / name; }

  /// What a command prints, with "$DIR" and "$OUT" in place of the directories' paths.
  Outcome run(const std::string& command) const {
    Process program(command);
    std::string output = named(program.readUntil(EOF));
    const int status = program.join();
    return {std::move(output), status, named(program.errors())};
  }

  /// Runs the commands of a transcript ("$ command") and expects its text, which has after each
  /// command the output, the errors and a status other than 0.
  void expectTranscript(const std::string& name) const {
    const std::string transcript = contentOf(QEL_TOOLS_TESTS "/" + name);
    std::istringstream lines(transcript);
    std::string today;
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("$ ")) {
        const auto [output, status, errors] = run(line.substr(2));
        today += line + '\n' + output + errors;
        today += status == 0 ? "" : "exit status " + std::to_string(status) + '\n';
      }
    }
    EXPECT_EQ(today, transcript);
  }

 private:
  std::string named(std::string text) const {
    for (const auto& [path, name] :
         {std::pair(directory_.text(), "$DIR"), {other_.text(), "$OUT"}}) {
      for (auto at = text.find(path); at != std::string::npos; at = text.find(path)) {
        text.replace(at, path.size(), name);
      }
    }
    return text;
  }

  const TemporaryDirectory directory_;
  const TemporaryDirectory other_;
};

}  // namespace qel::test
