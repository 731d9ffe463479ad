#include "host/QelPlatformWindows/SystemInformation.h"

#include <array>

#include <windows.h>

// These headers need windows.h first.
#include <lmcons.h>
#include <psapi.h>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::platform::windows {

namespace {
constexpr std::uint64_t bytesPerKB = 1024;
}

std::string SystemInformation::getUserName() {
  std::array<wchar_t, UNLEN + 1> name{};
  auto length = static_cast<DWORD>(name.size());
  if (!GetUserNameW(name.data(), &length)) {
    throw qel::exception("cannot find out the user's name: " +
                         utilities::systemMessage(utilities::lastSystemError()));
  }
  return utilities::utf8FromPath(name.data());
}

std::uint64_t SystemInformation::getUsedPhysicalMemoryOfSystemInKB() {
  MEMORYSTATUSEX memory{};
  memory.dwLength = sizeof(memory);
  if (!GlobalMemoryStatusEx(&memory)) {
    return 0;
  }
  return (memory.ullTotalPhys - memory.ullAvailPhys) / bytesPerKB;
}

std::uint64_t SystemInformation::getUsedPhysicalMemoryOfCurrentProcessInKB() {
  PROCESS_MEMORY_COUNTERS memory{};
  if (!K32GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof(memory))) {
    return 0;
  }
  return memory.WorkingSetSize / bytesPerKB;
}

}  // namespace qel::platform::windows
