#include "tools/sample-host/Interruption.h"

#include <utility>

#include <windows.h>

namespace qel::samplehost {
namespace {

// Never destroyed, because the system may call the handler below until the process ends.
std::function<void()>& reactionToInterruption() {
  static auto* const reaction = new std::function<void()>;
  return *reaction;
}

/// The system calls this function on a new thread. If it returns FALSE, the system ends the
/// process.
BOOL WINAPI handleRequest(DWORD request) {
  if (!interrupt()) {
    return FALSE;
  }
  reactionToInterruption()();
  if (request != CTRL_C_EVENT && request != CTRL_BREAK_EVENT) {
    // When the console is closed, the system would also end the process after TRUE.
    Sleep(INFINITE);
  }
  return TRUE;
}

}  // namespace

void catchInterruptions(std::function<void()> reaction) {
  reactionToInterruption() = std::move(reaction);
  SetConsoleCtrlHandler(handleRequest, TRUE);
}

}  // namespace qel::samplehost
