#include "host/QelUtilities/StandardError.h"

#include <cerrno>
#include <iostream>

#include <poll.h>
#include <unistd.h>

namespace qel::utilities {

void writeToStandardError(std::string_view text) {
  while (!text.empty()) {
    const auto count = ::write(STDERR_FILENO, text.data(), text.size());
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) {
      pollfd writable{.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
      ::poll(&writable, 1, -1);
    } else if (errno != EINTR) {
      return;
    }
  }
}

void writeLineToStandardError(std::string line) {
  // `poll` reports a pipe as writable while it accepts PIPE_BUF bytes (4096 on Linux).
  pollfd standardError{STDERR_FILENO, POLLOUT, 0};
  if (poll(&standardError, 1, 0) == 1 && standardError.revents == POLLOUT) {
    line += '\n';
    std::cerr << line << std::flush;  // the stream, because the host may have redirected it
  }
}

}  // namespace qel::utilities
