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

/// The console's code page before this program changed it; 0 if there is no console.
std::atomic<UINT> codePageBefore = 0;

void restoreCodePage() {
  if (const UINT codePage = codePageBefore.exchange(0); codePage != 0) {
    SetConsoleOutputCP(codePage);
  }
}

/// Leaves the decision about the program's end to the other handlers.
BOOL WINAPI restoreAtEnd(DWORD /*event*/) {
  restoreCodePage();
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
  codePageBefore = GetConsoleOutputCP();
  SetConsoleOutputCP(CP_UTF8);
  SetConsoleCtrlHandler(restoreAtEnd, TRUE);
}

Utf8Streams::~Utf8Streams() {
  std::fflush(stdout);
  restoreCodePage();
}

}  // namespace qel::tools
