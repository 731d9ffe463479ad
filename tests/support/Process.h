#pragma once

#include <chrono>
#include <csignal>
#include <cstdio>
#include <string>
#include <thread>
#include <utility>

#include <sys/wait.h>

#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

/// A program in a process of its own, which is killed at the latest at the end.
class Process {
 public:
  /// Starts what a shell makes of the command line, with `input` as its standard input.
  explicit Process(const std::string& commandLine, const std::string& input = "")
      : output_(start(commandLine, write(directory_.path() / "input", input))),
        id_(std::stoi(readUntil('\n'))) {}
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() {
    if (output_ != nullptr) {
      kill(id_, SIGKILL);
      join();
    }
  }

  /// What it prints up to this character, which is left out, or up to the end of its output.
  std::string readUntil(int end) {
    std::string text;
    for (int character = fgetc(output_); character != EOF && character != end;
         character = fgetc(output_)) {
      text += static_cast<char>(character);
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

  /// What it has written to standard error.
  std::string errors() const { return contentOf(directory_.path() / "errors"); }
  /// The same once it holds this text, which a log writes soon, or after ten seconds without it.
  std::string errorsWith(const std::string& text) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    std::string written = errors();
    while (written.find(text) == std::string::npos && std::chrono::steady_clock::now() < end) {
      std::this_thread::yield();
      written = errors();
    }
    return written;
  }

 private:
  static FILE* start(const std::string& commandLine, const std::filesystem::path& input) {
    const std::string command = "cd " + input.parent_path().string() + "; echo $$; exec " +
                                commandLine + " <input 2>errors";
    return popen(command.c_str(), "re");  // NOLINT(cert-env33-c): the tests' own commands
  }

  const TemporaryDirectory directory_;
  FILE* output_;
  const pid_t id_;
};

}  // namespace qel::test
