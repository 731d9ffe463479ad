#include "host/QelSql/DatabaseFile.h"

#include <array>
#include <cstdio>
#include <string>
#include <system_error>

#include "host/QelSql/FileNames.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::db::sql {
namespace {

std::filesystem::path withSuffix(std::filesystem::path path, const std::string& suffix) {
  path += suffix;
  return path;
}

std::string compactUtc(std::chrono::system_clock::time_point time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::seconds>(time - day));
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d%02u%02uT%02d%02d%02dZ",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text.data();
}

std::filesystem::path unusedNameFor(const std::filesystem::path& file,
                                    std::chrono::system_clock::time_point now) {
  const auto dated = withSuffix(file, setAsideMark + compactUtc(now));
  auto name = dated;
  std::error_code ignored;
  for (int number = 2; std::filesystem::exists(name, ignored); ++number) {
    name = withSuffix(dated, '-' + std::to_string(number));
  }
  return name;
}

}  // namespace

std::filesystem::path setAside(const std::filesystem::path& file,
                               std::chrono::system_clock::time_point now) {
  auto name = unusedNameFor(file, now);
  std::error_code error;
  std::filesystem::rename(file, name, error);
  if (error) {
    throw qel::exception("the corrupt file cannot be renamed: " + utilities::systemMessage(error));
  }
  for (const char* const suffix : companionSuffixes) {
    const auto companion = withSuffix(file, suffix);
    if (std::filesystem::is_empty(companion, error)) {
      std::filesystem::remove(companion, error);
    } else {
      std::filesystem::rename(companion, withSuffix(name, suffix), error);
    }
  }
  return name;
}

}  // namespace qel::db::sql
