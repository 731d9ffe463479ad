#pragma once

#ifdef _WIN32
#include <stdexcept>
#include <string>

#include <windows.h>
#else
#include "tests/support/StalledPipe.h"
#endif

namespace qel::test {

#ifdef _WIN32

/// Replaces standard error by a full pipe, until the destructor.
class StalledErrors {
 public:
  StalledErrors() {
    if (CreatePipe(&out_, &in_, nullptr, 4096) == 0) {
      throw std::runtime_error("cannot make a pipe");
    }
    setMode(PIPE_NOWAIT);
    for (DWORD written = 1; written == 1;) {
      if (WriteFile(in_, "\n", 1, &written, nullptr) == 0) {
        break;
      }
    }
    setMode(PIPE_WAIT);
    SetStdHandle(STD_ERROR_HANDLE, in_);
  }
  ~StalledErrors() {
    SetStdHandle(STD_ERROR_HANDLE, errors_);
    CloseHandle(in_);
    CloseHandle(out_);
  }

  /// Reads until this text has come, and returns everything.
  std::string readUntil(const std::string& last) const {
    std::string text;
    std::string part(4096, '\0');
    DWORD count = 0;
    while (text.find(last) == std::string::npos &&
           ReadFile(out_, part.data(), static_cast<DWORD>(part.size()), &count, nullptr) != 0) {
      text.append(part, 0, count);
    }
    return text;
  }

 private:
  void setMode(DWORD mode) { SetNamedPipeHandleState(in_, &mode, nullptr, nullptr); }

  const HANDLE errors_ = GetStdHandle(STD_ERROR_HANDLE);
  HANDLE out_ = nullptr;
  HANDLE in_ = nullptr;
};

#else

/// Replaces standard error by a full pipe, until the destructor.
class StalledErrors {
 public:
  StalledErrors() {
    const int end = ::open(pipe_.path().c_str(), O_WRONLY | O_CLOEXEC);
    ::dup2(end, STDERR_FILENO);
    ::close(end);
    std::filesystem::remove(pipe_.path());
    std::filesystem::remove(pipe_.path().parent_path());  // even if the test exits
  }
  ~StalledErrors() {
    ::dup2(errors_, STDERR_FILENO);
    ::close(errors_);
  }

  /// Reads until this text has come, and returns everything.
  std::string readUntil(const std::string& last) const { return pipe_.readUntil(last); }

 private:
  const StalledPipe pipe_;
  const int errors_ = ::dup(STDERR_FILENO);
};

#endif

}  // namespace qel::test
