#pragma once

#include <cstdlib>
#include <string>

namespace qel::test {

/// The folder with Windows programs that Wine runs in place of this build's programs; null without.
inline const char* windowsPrograms() { return std::getenv("QEL_WINDOWS_PROGRAMS"); }

/// The folder of the tested programs.
inline std::string programsOr(const char* ofThisBuild) {
  return windowsPrograms() != nullptr ? windowsPrograms() : ofThisBuild;
}

}  // namespace qel::test
