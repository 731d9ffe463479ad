#include "tools/sample-host/EnvironmentFacts.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#ifndef _WIN32
#include <sys/utsname.h>
#endif

#include "host/QelDateTime/DateTimeFormat.h"

namespace qel::samplehost {
namespace {

namespace items = log::analytics::items;
using items::details::ApplicationInfo;
using items::details::HardwareEnvironmentInfo;
using items::details::OsEnvironmentInfo;
using items::details::QelEnvironmentInfo;

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

/// The user's language, for example "de_DE" if the locale is "de_DE.UTF-8".
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

std::string bitness() { return std::to_string(sizeof(void*) * 8); }

std::string kernelRelease() {
#ifndef _WIN32
  utsname name{};
  if (uname(&name) == 0) {
    return name.release;
  }
#endif
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

/// The time when this program's file was last modified.
std::string exeDate() {
  std::error_code unreadable;
  const auto time = std::filesystem::last_write_time("/proc/self/exe", unreadable);
  if (unreadable) {
    return {};
  }
  const std::chrono::duration<double> sinceEpoch =
      std::chrono::file_clock::to_sys(time).time_since_epoch();
  return datetime::DateTimeFormat(datetime::DateTimeFormat::SpecialFormat::UtcMilliseconds)
      .toString(datetime::DateTime(sinceEpoch.count()));
}

ApplicationInfo thisProgram() {
#ifdef NDEBUG
  const std::string configuration = "Release";
#else
  const std::string configuration = "Debug";
#endif
  return {"qel-sample-host", QEL_VERSION, QEL_VERSION, exeDate(),
          configuration,     language(),  bitness()};
}

}  // namespace

std::unique_ptr<items::EnvironmentItem> createEnvironmentItem() {
  const std::vector<QelEnvironmentInfo> installed{
      {thisProgram(), /*isCurrent=*/true, /*webUpdate=*/"", {}, {}, {}}};
  return std::make_unique<items::EnvironmentItem>(operatingSystem(), hardware(), installed,
                                                  /*isInternal=*/false);
}

}  // namespace qel::samplehost
