#pragma once

#include <cstdlib>
#include <string>

namespace qel::test {

/// Sets an environment variable of this process.
inline void setEnvironment(const char* name, const std::string& value) {
#ifdef _WIN32
  _putenv_s(name, value.c_str());
#else
  setenv(name, value.c_str(), 1);
#endif
}

/// Sets where this process and its children make temporary directories.
inline void setTemporaryRoot(const std::string& directory) {
  for (const char* const name : {"TMPDIR", "TMP"}) {  // POSIX, Windows
    setEnvironment(name, directory);
  }
}

}  // namespace qel::test
