#pragma once

#include <cstdint>
#include <string>

namespace qel::platform::windows {

/// Facts about the machine and the user, read at each call. Thread-safe.
class SystemInformation {
 public:
  /// The login name of the user who runs the process (UTF-8). Throws `qel::exception` if the name
  /// is not available.
  static std::string getUserName();

  /// The physical memory in use, in KB (1024 bytes). For the system: total memory minus available
  /// memory. For this process: its resident set. 0 if the value cannot be read.
  /// @{
  static std::uint64_t getUsedPhysicalMemoryOfSystemInKB();
  static std::uint64_t getUsedPhysicalMemoryOfCurrentProcessInKB();
  /// @}
};

}  // namespace qel::platform::windows
