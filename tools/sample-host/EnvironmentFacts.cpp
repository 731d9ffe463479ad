#include "tools/sample-host/EnvironmentFacts.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "host/QelDateTime/DateTimeFormat.h"
#include "tools/sample-host/MachineFacts.h"

namespace qel::samplehost {
namespace {

namespace items = log::analytics::items;
using items::details::ApplicationInfo;
using items::details::QelEnvironmentInfo;

/// The time when this program's file was last modified.
std::string exeDate() {
  std::error_code unreadable;
  const auto time = std::filesystem::last_write_time(programFile(), unreadable);
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
