#include "Application/Log/Analytics/SystemEnvironment/ThisMachine.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/QelDateTime/DateTimeFormat.h"
#include "host/QelPlatformWindows/MachineFacts.h"

namespace qel::log::analytics::systemenvironment {
namespace {

using items::details::ApplicationInfo;
using items::details::HardwareEnvironmentInfo;
using items::details::OsEnvironmentInfo;
using items::details::QelEnvironmentInfo;

/// The time when this program's file was last modified.
std::string exeDate() {
  std::error_code unreadable;
  const auto time = std::filesystem::last_write_time(platform::windows::programFile(), unreadable);
  if (unreadable) {
    return {};
  }
  // Not every standard library can convert the clock of files to the system's clock.
  const auto age = std::filesystem::file_time_type::clock::now() - time;
  const std::chrono::duration<double> sinceEpoch =
      (std::chrono::system_clock::now() - age).time_since_epoch();
  return datetime::DateTimeFormat(datetime::DateTimeFormat::SpecialFormat::UtcMilliseconds)
      .toString(datetime::DateTime(sinceEpoch.count()));
}

void fillIfEmpty(std::string& text, const std::string& fact) {
  if (text.empty()) {
    text = fact;
  }
}

}  // namespace

std::unique_ptr<items::EnvironmentItem> describeThisMachine(ApplicationInfo program,
                                                            bool isInternal) {
  const auto facts = platform::windows::readMachineFacts();
  const std::string bitness = std::to_string(sizeof(void*) * 8);
  fillIfEmpty(program.exeDate, exeDate());
  fillIfEmpty(program.language, facts.language);
  fillIfEmpty(program.bitness, bitness);
  std::map<std::string, std::string> memory;
  if (!facts.memory.empty()) {
    memory["Total"] = facts.memory;
  }
  return std::make_unique<items::EnvironmentItem>(
      OsEnvironmentInfo(facts.systemName, bitness, facts.language, facts.systemBuild,
                        facts.isRemoteSession, facts.screenResolution, facts.screenDpi,
                        facts.graphicCardDriver),
      HardwareEnvironmentInfo(facts.processor, facts.graphicCard, memory),
      std::vector{
          QelEnvironmentInfo(std::move(program), /*isCurrent=*/true, /*webUpdate=*/"", {}, {}, {})},
      isInternal);
}

}  // namespace qel::log::analytics::systemenvironment
