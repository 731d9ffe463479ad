#include "tools/support/TerminalDevice.h"

#include <windows.h>

namespace qel::support {
namespace {

HANDLE handleOf(Stream stream) {
  switch (stream) {
    case Stream::Input:
      return GetStdHandle(STD_INPUT_HANDLE);
    case Stream::Output:
      return GetStdHandle(STD_OUTPUT_HANDLE);
    case Stream::Errors:
      return GetStdHandle(STD_ERROR_HANDLE);
  }
  return INVALID_HANDLE_VALUE;
}

}  // namespace

bool isTerminal(Stream stream) {
  DWORD mode = 0;  // The NUL device has no mode; `_isatty` would accept it.
  return GetConsoleMode(handleOf(stream), &mode) != 0;
}

std::size_t terminalWidth(Stream stream) {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  return GetConsoleScreenBufferInfo(handleOf(stream), &info) != 0
             ? static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1)
             : 0;
}

bool understandsEscapes(Stream stream) {
  DWORD mode = 0;
  return GetConsoleMode(handleOf(stream), &mode) != 0 &&
         (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

}  // namespace qel::support
