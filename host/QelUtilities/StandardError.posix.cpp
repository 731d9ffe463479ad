#include "host/QelUtilities/StandardError.h"


#include <poll.h>
#include <unistd.h>

namespace qel::utilities {

bool standardErrorTakesLine() {
  // `poll` reports a pipe as writable while it accepts PIPE_BUF bytes (4096 on Linux).
  pollfd standardError{STDERR_FILENO, POLLOUT, 0};
  return poll(&standardError, 1, 0) == 1 && standardError.revents == POLLOUT;
}

}  // namespace qel::utilities
