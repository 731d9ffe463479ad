#include "tools/support/TerminalDevice.h"

#include <cstdlib>
#include <string_view>

#include <sys/ioctl.h>
#include <unistd.h>

namespace qel::support {
namespace {

int fileOf(Stream stream) {
  switch (stream) {
    case Stream::Input:
      return STDIN_FILENO;
    case Stream::Output:
      return STDOUT_FILENO;
    case Stream::Errors:
      return STDERR_FILENO;
  }
  return -1;
}

}  // namespace

bool isTerminal(Stream stream) { return isatty(fileOf(stream)) != 0; }

std::size_t terminalWidth(Stream stream) {
  winsize size{};
  return isTerminal(stream) && ioctl(fileOf(stream), TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool understandsEscapes(Stream stream) {
  const char* const kind = std::getenv("TERM");
  return isTerminal(stream) && kind != nullptr && *kind != '\0' && std::string_view(kind) != "dumb";
}

}  // namespace qel::support
