#include "tools/sample-host/MachineFacts.h"

#include <cstdlib>
#include <fstream>
#include <map>

#include <sys/utsname.h>

namespace qel::samplehost {
namespace {

using log::analytics::items::details::HardwareEnvironmentInfo;
using log::analytics::items::details::OsEnvironmentInfo;

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
  std::error_code unreadable;
  for (const auto& connector : std::filesystem::directory_iterator("/sys/class/drm", unreadable)) {
    if (firstLineOf(connector.path() / "status") == "connected") {
      return firstLineOf(connector.path() / "modes");
    }
  }
  return {};
}

}  // namespace

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

OsEnvironmentInfo operatingSystem() {
  constexpr int unknownDpi = 0;
  return {valueIn("/etc/os-release", "PRETTY_NAME", '='),
          bitness(),
          language(),
          kernelRelease(),
          /*isTerminalServer=*/false,
          screenResolution(),
          unknownDpi,
          /*graphicCardDriver=*/""};
}

HardwareEnvironmentInfo hardware() {
  std::map<std::string, std::string> memory;
  if (const auto total = valueIn("/proc/meminfo", "MemTotal", ':'); !total.empty()) {
    memory["Total"] = total;
  }
  return {valueIn("/proc/cpuinfo", "model name", ':'), /*graphicCard=*/"", memory};
}

std::filesystem::path programFile() { return "/proc/self/exe"; }

}  // namespace qel::samplehost
