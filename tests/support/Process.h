#pragma once

#include <cstdio>
#include <string>

#include <sys/types.h>

#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

/// A program in a process of its own, which is killed at the latest at the end.
class Process {
 public:
  /// Starts what a shell makes of the command line, with `input` as its standard input.
  explicit Process(const std::string& commandLine, const std::string& input = "");
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process();

  /// What it prints up to this character, which is left out, or up to the end of its output.
  std::string readUntil(int end);
  void terminate() const;
  pid_t id() const { return id_; }
  /// Waits for its end and returns the exit status, -1 without one.
  int join();

  /// What it has written to standard error.
  std::string errors() const { return contentOf(directory_.path() / "errors"); }

 private:
  const TemporaryDirectory directory_;
  FILE* output_;
  const pid_t id_;
};

}  // namespace qel::test
