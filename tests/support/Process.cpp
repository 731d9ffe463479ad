#include "tests/support/Process.h"

#include <csignal>
#include <utility>

#include <sys/wait.h>

namespace qel::test {
namespace {

FILE* start(const std::string& commandLine, const std::string& input,
            const std::filesystem::path& directory) {
  write(directory / "input", input);
  const std::string command =
      "cd " + directory.string() + "; echo $$; exec " + commandLine + " <input 2>errors";
  return popen(command.c_str(), "re");  // NOLINT(cert-env33-c): the tests' own commands
}

}  // namespace

Process::Process(const std::string& commandLine, const std::string& input)
    : output_(start(commandLine, input, directory_.path())), id_(std::stoi(readUntil('\n'))) {}

Process::~Process() {
  if (output_ != nullptr) {
    kill(id_, SIGKILL);
    join();
  }
}

std::string Process::readUntil(int end) {
  std::string text;
  for (int character = fgetc(output_); character != EOF && character != end;
       character = fgetc(output_)) {
    text += static_cast<char>(character);
  }
  return text;
}

void Process::terminate() const { kill(id_, SIGTERM); }

int Process::join() {
  const int status = pclose(std::exchange(output_, nullptr));
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace qel::test
