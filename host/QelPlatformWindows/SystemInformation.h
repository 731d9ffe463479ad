#pragma once

#include <cstdint>
#include <string>

namespace qel::platform::windows {

/// Facts about the machine and the user, read at each call. Any thread.
class SystemInformation {
 public:
  /// Login name of the user who runs the process (UTF-8). Throws `qel::exception` when it is not
  /// available.
  static std::string getUserName();

  /// Physical memory in use, in KB (1024 bytes): of the whole system (total less available), and of
  /// this process (its resident set). 0 when it cannot be read.
  /// @{
  static std::uint64_t getUsedPhysicalMemoryOfSystemInKB();
  static std::uint64_t getUsedPhysicalMemoryOfCurrentProcessInKB();
  /// @}
};

}  // namespace qel::platform::windows
