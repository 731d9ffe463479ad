#include "benchmarks/ServerProcess.h"

#include <array>
#include <system_error>

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/QelHttp/Settings.h"
#include "tests/support/HttpsTestServer.h"
#include "tests/support/TestCertificates.h"

namespace qel::benchmarks {
namespace {

test::TestCertificates& authority() {
  static test::TestCertificates certificates;
  return certificates;
}

const std::filesystem::path& identity() {
  static const std::filesystem::path issued = authority().issue(ServerProcess::host);
  return issued;
}

/// Serves until the other end of the socket is closed.
[[noreturn]] void serve(int socket) {
  {
    const test::HttpsTestServer server({.identity = identity(), .answer = [](const test::Request&) {
                                          return test::Reply{.status = 204};
                                        }});
    const std::string address = server.address() + '\n';
    char closed = 0;
    if (::write(socket, address.data(), address.size()) > 0) {
      static_cast<void>(::read(socket, &closed, 1));
    }
  }
  ::_exit(0);
}

}  // namespace

ServerProcess::ServerProcess() {
  identity();
  std::array<int, 2> sockets{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "socketpair");
  }
  id_ = ::fork();
  if (id_ == 0) {
    ::close(sockets[0]);
    serve(sockets[1]);
  }
  ::close(sockets[1]);
  socket_ = sockets[0];
  for (char c = 0; ::read(socket_, &c, 1) == 1 && c != '\n';) {
    address_ += c;
  }
  protocol::https::setSettings(
      {.caBundle = caFile(), .connectTo = address_, .connectFor = host, .proxy = {}});
}

ServerProcess::~ServerProcess() {
  ::close(socket_);
  ::waitpid(id_, nullptr, 0);
}

std::string ServerProcess::caFile() { return authority().caFile(); }

}  // namespace qel::benchmarks
