#include "host/QelPlatformWindows/SystemInformation.h"

#include <cerrno>
#include <charconv>
#include <fstream>
#include <string_view>
#include <system_error>
#include <vector>

#include <pwd.h>
#include <unistd.h>

#include "host/QelUtilities/Exception.h"

namespace qel::platform::windows {

namespace {

/// The number in a line like "MemTotal: 16303428 kB" of a file that proc(5) describes; 0 if there
/// is no line with this key.
std::uint64_t amountInKB(const char* file, std::string_view key) {
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with(key)) {
      continue;
    }
    const std::size_t digits = line.find_first_not_of(" \t", key.size());
    std::uint64_t amount = 0;
    if (digits != std::string::npos) {
      std::from_chars(line.data() + digits, line.data() + line.size(), amount);
    }
    return amount;
  }
  return 0;
}

}  // namespace

std::string SystemInformation::getUserName() {
  std::vector<char> texts(1024);
  passwd entry{};
  passwd* found = nullptr;
  int error = getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &found);
  while (error == ERANGE) {
    texts.resize(texts.size() * 2);
    error = getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &found);
  }
  if (found == nullptr) {
    throw qel::exception("cannot find out the user's name: " +
                         (error == 0 ? "user " + std::to_string(getuid()) + " has no account"
                                     : std::generic_category().message(error)));
  }
  return found->pw_name;
}

std::uint64_t SystemInformation::getUsedPhysicalMemoryOfSystemInKB() {
  constexpr const char* file = "/proc/meminfo";
  const std::uint64_t total = amountInKB(file, "MemTotal:");
  const std::uint64_t available = amountInKB(file, "MemAvailable:");
  return available < total ? total - available : 0;
}

std::uint64_t SystemInformation::getUsedPhysicalMemoryOfCurrentProcessInKB() {
  return amountInKB("/proc/self/status", "VmRSS:");
}

}  // namespace qel::platform::windows
