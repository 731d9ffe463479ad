#include "host/QelUtilities/StandardError.h"

#ifndef _WIN32
#include <poll.h>
#include <unistd.h>
#endif

namespace qel::utilities {

bool standardErrorTakesLine() {
#ifdef _WIN32
  return true;
#else
  // `poll` reports a pipe as writable while it accepts PIPE_BUF bytes (4096 on Linux).
  pollfd standardError{STDERR_FILENO, POLLOUT, 0};
  return poll(&standardError, 1, 0) == 1 && standardError.revents == POLLOUT;
#endif
}

}  // namespace qel::utilities
