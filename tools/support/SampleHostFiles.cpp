#include "tools/support/SampleHostFiles.h"

#include <algorithm>
#include <cctype>

#include "tools/common/SampleHostFileNames.h"

namespace qel::support {
namespace {

/// Whether this is the name of the log, or of an older, numbered log such as
/// "qel-sample-host.1.log".
bool isLog(std::string_view name) {
  constexpr std::string_view log = tools::sampleHostLog;
  constexpr auto dot = log.rfind('.');
  constexpr auto stem = log.substr(0, dot);
  constexpr auto ending = log.substr(dot);
  if (name == log) {
    return true;
  }
  if (!name.starts_with(stem) || !name.ends_with(ending) || name.size() <= log.size() + 1) {
    return false;
  }
  const auto number = name.substr(stem.size(), name.size() - log.size());
  return number.front() == '.' &&
         std::all_of(number.begin() + 1, number.end(),
                     [](unsigned char character) { return std::isdigit(character) != 0; });
}

}  // namespace

bool isSampleHostFile(std::string_view name) {
  return name == tools::installationIdFile || isLog(name);
}

}  // namespace qel::support
