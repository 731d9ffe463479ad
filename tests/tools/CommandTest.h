#pragma once

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/support/Process.h"
#include "tests/support/Programs.h"

namespace qel::test {

struct Outcome {
  std::string output;
  int status;
  std::string errors;
};

/// Runs commands of a shell in which $DIR and $OUT are two directories, empty at first, and $TESTS
/// is this folder. The programs are found by their names.
class CommandTest : public testing::Test {
 protected:
  CommandTest() {
    setenv("DIR", directory_.text().c_str(), 1);
    setenv("OUT", other_.text().c_str(), 1);
    setenv("TESTS", QEL_TOOLS_TESTS, 1);
    setenv("PATH", (programsOr(QEL_PROGRAMS) + ":" + getenv("PATH")).c_str(), 1);
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
  /// command the output, the errors and a status other than 0. A Windows program cannot do what
  /// "linux$ command" expects.
  void expectTranscript(const std::string& name) const {
    const std::string transcript = contentOf(QEL_TOOLS_TESTS "/" + name);
    std::istringstream lines(transcript);
    std::string today;
    std::string expected;
    bool isRun = true;
    for (std::string line; std::getline(lines, line);) {
      const bool isForLinux = line.starts_with("linux$ ");
      if (isForLinux || line.starts_with("$ ")) {
        isRun = !isForLinux || windowsPrograms() == nullptr;
        today += isRun ? line + '\n' + resultOf(line.substr(line.find(' ') + 1)) : "";
      }
      expected += isRun ? line + '\n' : "";
    }
    EXPECT_EQ(today, expected);
  }

 private:
  std::string resultOf(const std::string& command) const {
    const auto [output, status, errors] = run(command);
    return output + errors + (status == 0 ? "" : "exit status " + std::to_string(status) + '\n');
  }

  std::string named(std::string text) const {
    for (const auto& [path, name] :
         {std::pair(directory_.text(), "$DIR"), {other_.text(), "$OUT"}}) {
      std::string onWindows = "Z:" + path;
      std::replace(onWindows.begin(), onWindows.end(), '/', '\\');
      for (const auto& spelling : {onWindows, path}) {
        for (auto at = text.find(spelling); at != std::string::npos; at = text.find(spelling)) {
          text.replace(at, spelling.size(), name);
          const auto end = std::min(text.find_first_of(" :\"\n", at), text.size());
          std::replace(text.begin() + static_cast<std::ptrdiff_t>(at),
                       text.begin() + static_cast<std::ptrdiff_t>(end), '\\', '/');
        }
      }
    }
    return text;
  }

  const TemporaryDirectory directory_;
  const TemporaryDirectory other_;
};

}  // namespace qel::test
