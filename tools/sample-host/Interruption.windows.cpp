#include "tools/sample-host/Interruption.h"

#include <algorithm>

#include <windows.h>

namespace qel::samplehost {
namespace {

using std::chrono::milliseconds;

/// The system ends the process five seconds after its console was closed.
constexpr milliseconds longestDeadlineAfterClosing = std::chrono::seconds(3);

/// Set before the handler below is registered, and then constant.
constinit milliseconds deadlineOfExit{0};

/// The system calls this function on a new thread. If it returns FALSE, the system ends the
/// process.
BOOL WINAPI handleRequest(DWORD request) {
  const bool isClosing = request != CTRL_C_EVENT && request != CTRL_BREAK_EVENT;
  if (!interrupt(isClosing ? std::min(deadlineOfExit, longestDeadlineAfterClosing)
                           : deadlineOfExit)) {
    return FALSE;
  }
  if (isClosing) {
    // When the console is closed, the system would also end the process after TRUE.
    Sleep(INFINITE);
  }
  return TRUE;
}

}  // namespace

void catchInterruptions(milliseconds exitDeadline) {
  deadlineOfExit = exitDeadline;
  SetConsoleCtrlHandler(handleRequest, TRUE);
}

}  // namespace qel::samplehost
