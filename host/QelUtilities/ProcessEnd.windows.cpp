#include "host/QelUtilities/ProcessEnd.h"

#include <cstdlib>
#include <vector>

#include <corecrt_startup.h>
#include <windows.h>

#include "host/QelUtilities/Mutex.h"

namespace qel::utilities {
namespace {

struct Actions {
  Mutex mutex;
  std::vector<void (*)()> list QEL_GUARDED_BY(mutex);
};

Actions& actions() {
  // Never destroyed, because the C library calls `runLastAction` after static destructors.
  static auto* const instance = new Actions;
  return *instance;
}

/// Whether the system has terminated all other threads. Some C libraries run the handlers even
/// then.
bool areOtherThreadsTerminated() {
  using Function = BOOLEAN(NTAPI*)();
  const auto isShutDown = reinterpret_cast<Function>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlDllShutdownInProgress")));
  return isShutDown != nullptr && isShutDown() != FALSE;
}

void runLastAction() {
  if (areOtherThreadsTerminated()) {
    return;
  }
  void (*action)() = nullptr;
  {
    auto& [mutex, list] = actions();
    const MutexLock lock(mutex);
    action = list.back();
    list.pop_back();
  }
  action();
}

/// Registers `runLastAction` with the C library of the process. In a DLL, `std::atexit` would
/// register it with the DLL.
void registerWithProcess() {
#if defined(__MINGW32__) && !defined(_UCRT)
  _onexit([] {
    runLastAction();
    return 0;
  });
#else
  _crt_atexit(runLastAction);
#endif
}

}  // namespace

void keepLoaded(void (*code)()) {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                     reinterpret_cast<const wchar_t*>(code), &module);
}

void beforeExit(void (*action)()) {
  keepLoaded(action);
  keepLoaded(runLastAction);
  {
    auto& [mutex, list] = actions();
    const MutexLock lock(mutex);
    list.push_back(action);
  }
  registerWithProcess();  // without the lock, because an exiting C library holds one of its own
}

}  // namespace qel::utilities
