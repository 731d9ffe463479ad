#include "tests/tools/collector/CollectorProcess.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qel::collector {
namespace {

std::filesystem::path makeDirectory() {
  std::string path = testing::TempDir() + "qel-collector-XXXXXX";
  EXPECT_NE(::mkdtemp(path.data()), nullptr);
  return path;
}

void makeFiles(const std::filesystem::path& directory) {
  std::ofstream(directory / "users") << "ada:open:sesame\n";
  const std::string command =
      "cd '" + directory.string() +
      "' && openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes"
      " -keyout key.pem -out certificate.pem -days 2 -subj /CN=collector"
      " -addext subjectAltName=IP:127.0.0.1 2> openssl.log";
  EXPECT_EQ(std::system(command.c_str()), 0);
}

int start(std::vector<std::string> arguments, const std::filesystem::path& errors, int output) {
  std::vector<char*> values;
  values.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) {
    values.push_back(argument.data());
  }
  values.push_back(nullptr);
  const int process = ::fork();
  if (process == 0) {
    // A test that dies leaves no server behind.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(::open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
    ::execv(values.front(), values.data());
    ::_exit(127);
  }
  return process;
}

/// The first line of a pipe, or what came before its end.
std::string readLine(int pipe) {
  std::string line;
  for (char character = 0; ::read(pipe, &character, 1) == 1 && character != '\n';) {
    line += character;
  }
  return line;
}

}  // namespace

CollectorProcess::CollectorProcess(const std::vector<std::string>& arguments)
    : directory_(makeDirectory()) {
  // A server that cuts a connection must not end the test.
  std::signal(SIGPIPE, SIG_IGN);
  makeFiles(directory_);
  std::vector<std::string> command{COLLECTOR_PROGRAM};
  if (arguments.empty()) {
    command.insert(command.end(), {"--listen=127.0.0.1:0", "--certificate",
                                   directory_ / "certificate.pem", "--key", directory_ / "key.pem",
                                   "--credentials", directory_ / "users", "--store", store()});
  }
  command.insert(command.end(), arguments.begin(), arguments.end());
  std::array<int, 2> pipe{};
  EXPECT_EQ(::pipe(pipe.data()), 0);
  process_ = start(std::move(command), directory_ / "errors", pipe[1]);
  ::close(pipe[1]);
  output_ = pipe[0];
  if (arguments.empty()) {
    EXPECT_EQ(std::sscanf(readLine(output_).c_str(), "listening on 127.0.0.1:%d", &port_), 1)
        << errors();
    client_ = std::make_unique<httplib::SSLClient>("127.0.0.1", port_);
    client_->set_ca_cert_path((directory_ / "certificate.pem").c_str());
    client_->set_tcp_nodelay(true);
    client_->set_basic_auth("ada", "open:sesame");
  }
}

CollectorProcess::~CollectorProcess() {
  if (process_ != -1) {
    ::kill(process_, SIGKILL);
    join();
  }
  ::close(output_);
  std::filesystem::remove_all(directory_);
}

std::string CollectorProcess::errors() const {
  std::ostringstream text;
  text << std::ifstream(directory_ / "errors").rdbuf();
  return text.str();
}

void CollectorProcess::terminate() const { ::kill(process_, SIGTERM); }

int CollectorProcess::join() {
  int status = 0;
  ::waitpid(std::exchange(process_, -1), &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace qel::collector
