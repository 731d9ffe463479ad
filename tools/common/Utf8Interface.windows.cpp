#include "tools/common/Utf8Interface.h"

#include <atomic>
#include <cstdio>
#include <memory>

#include <fcntl.h>
#include <io.h>
#include <windows.h>
// Must follow windows.h.
#include <shellapi.h>

#include "tools/common/WideText.h"

namespace qel::tools {
namespace {

constexpr std::size_t consoleBuffer = 65536;

struct ConsoleOutput {
  HANDLE buffer = nullptr;
  UINT codePage = 0;
  DWORD mode = 0;
};

/// The console's settings before this program changed them. Constant while `isConsoleSetUp`.
constinit ConsoleOutput consoleBefore;
constinit std::atomic<bool> isConsoleSetUp = false;

/// Makes the console show UTF-8 and understand escape sequences, if there is a console.
void setUpConsole() {
  ConsoleOutput& before = consoleBefore;
  before.buffer =
      CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                  nullptr, OPEN_EXISTING, 0, nullptr);
  if (before.buffer == INVALID_HANDLE_VALUE) {
    return;
  }
  before.codePage = GetConsoleOutputCP();
  GetConsoleMode(before.buffer, &before.mode);
  isConsoleSetUp = true;
  SetConsoleOutputCP(CP_UTF8);
  SetConsoleMode(before.buffer, before.mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

void restoreConsole() {
  if (isConsoleSetUp.exchange(false)) {
    SetConsoleMode(consoleBefore.buffer, consoleBefore.mode);
    SetConsoleOutputCP(consoleBefore.codePage);
    CloseHandle(consoleBefore.buffer);
  }
}

/// Leaves the decision about the program's end to the other handlers.
BOOL WINAPI restoreAtEnd(DWORD /*event*/) {
  restoreConsole();
  return FALSE;
}

}  // namespace

std::vector<std::string> utf8Arguments(int /*count*/, const char* const* /*values*/) {
  int count = 0;
  const std::unique_ptr<wchar_t*, decltype(&LocalFree)> values(
      CommandLineToArgvW(GetCommandLineW(), &count), LocalFree);
  std::vector<std::string> arguments;
  for (int place = 1; place < count; ++place) {
    arguments.push_back(utf8FromWide(values.get()[place]));
  }
  return arguments;
}

Utf8Streams::Utf8Streams() {
  for (std::FILE* const stream : {stdin, stdout, stderr}) {
    _setmode(_fileno(stream), _O_BINARY);
  }
  // Without a buffer, the C library writes to a console byte by byte, and splits characters.
  for (std::FILE* const stream : {stdout, stderr}) {
    if (_isatty(_fileno(stream)) != 0) {
      std::setvbuf(stream, nullptr, _IOFBF, consoleBuffer);
    }
  }
  setUpConsole();
  SetConsoleCtrlHandler(restoreAtEnd, TRUE);
}

Utf8Streams::~Utf8Streams() {
  std::fflush(stdout);
  restoreConsole();
}

}  // namespace qel::tools
