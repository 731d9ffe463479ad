#pragma once

#include <csignal>
#include <cstdio>
#include <utility>

#include <sys/wait.h>

#include "tests/support/Files.h"
#include "tests/support/Tally.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

/// A program in a process of its own. The destructor kills it.
class Process {
 public:
  /// Starts a command line of the shell, with `input` as its standard input.
  explicit Process(const std::string& commandLine, const std::string& input = "")
      // NOLINTNEXTLINE(cert-env33-c): the tests' own commands
      : output_(popen(("cd " + write(directory_.path() / "input", input).parent_path().string() +
                       "; echo $$; exec " + commandLine + " <input 2>errors")
                          .c_str(),
                      "re")),
        id_(std::stoi(readUntil('\n'))) {}
  ~Process() {
    if (output_ != nullptr) {
      kill(id_, SIGKILL);
      join();
    }
  }

  /// Its output up to this character, which is left out, or up to the end.
  std::string readUntil(int end) {
    std::string text;
    for (int c = 0; (c = fgetc(output_)) != EOF && c != end;) {
      text += static_cast<char>(c);
    }
    return text;
  }
  void terminate() const { kill(id_, SIGTERM); }
  pid_t id() const { return id_; }
  /// Waits for its end and returns the exit status, -1 without one.
  int join() {
    const int status = pclose(std::exchange(output_, nullptr));
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  /// Its standard error until now.
  std::string errors() const { return contentOf(directory_.path() / "errors"); }
  /// The same when it has this text, or after ten seconds.
  std::string errorsWith(const std::string& text) const {
    waitUntil([&] { return errors().find(text) != std::string::npos; }, 10s);
    return errors();
  }

 private:
  const TemporaryDirectory directory_;
  FILE* output_;
  const pid_t id_;
};

}  // namespace qel::test
