#include "host/QelPlatformWindows/MachineFacts.h"

#include <cstdlib>
#include <fstream>
#include <string>
#include <system_error>

#include <sys/utsname.h>

namespace qel::platform::windows {
namespace {

constexpr const char* blanks = " \t\"";

std::string trimmed(const std::string& text) {
  const auto begin = text.find_first_not_of(blanks);
  return begin == std::string::npos ? ""
                                    : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

/// The first value of `name` in a file of names and values, without quotes; empty if there is none.
std::string valueIn(const std::filesystem::path& file, const std::string& name, char separator) {
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    const auto end = line.find(separator);
    if (end != std::string::npos && trimmed(line.substr(0, end)) == name) {
      return trimmed(line.substr(end + 1));
    }
  }
  return {};
}

std::string firstLineOf(const std::filesystem::path& file) {
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  return line;
}

std::string kernelRelease() {
  utsname name{};
  if (uname(&name) == 0) {
    return name.release;
  }
  return {};
}

/// The preferred mode of the first connected screen, for example "1920x1080".
std::string screenResolution() {
  std::error_code error;
  const std::filesystem::directory_iterator end;
  for (std::filesystem::directory_iterator connector("/sys/class/drm", error);
       !error && connector != end; connector.increment(error)) {
    if (firstLineOf(connector->path() / "status") == "connected") {
      return firstLineOf(connector->path() / "modes");
    }
  }
  return {};
}

std::string language() {
  for (const char* const name : {"LC_ALL", "LANG"}) {
    const char* const value = std::getenv(name);
    if (value != nullptr && *value != '\0') {
      const std::string locale(value);
      return locale.substr(0, locale.find('.'));
    }
  }
  return {};
}

}  // namespace

MachineFacts readMachineFacts() {
  MachineFacts facts;
  facts.systemName = valueIn("/etc/os-release", "PRETTY_NAME", '=');
  facts.systemBuild = kernelRelease();
  facts.language = language();
  facts.screenResolution = screenResolution();
  facts.processor = valueIn("/proc/cpuinfo", "model name", ':');
  facts.memory = valueIn("/proc/meminfo", "MemTotal", ':');
  return facts;
}

std::filesystem::path programFile() { return "/proc/self/exe"; }

}  // namespace qel::platform::windows
