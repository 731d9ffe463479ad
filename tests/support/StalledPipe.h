#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

/// A named pipe that is full: a write waits until the pipe is read.
class StalledPipe {
 public:
  StalledPipe() {
    while (::write(end_, "\n", 1) == 1) {
    }
  }
  ~StalledPipe() { ::close(end_); }

  const std::filesystem::path& path() const { return path_; }

  /// Reads until this text has come, or nothing for ten seconds, and returns everything.
  std::string readUntil(const std::string& last) const {
    std::string text;
    std::string part(4096, '\0');
    pollfd readable{.fd = end_, .events = POLLIN, .revents = 0};
    while (text.find(last) == std::string::npos && ::poll(&readable, 1, 10'000) == 1) {
      text.append(part, 0, static_cast<std::size_t>(::read(end_, part.data(), part.size())));
    }
    return text;
  }

 private:
  const TemporaryDirectory directory_;
  const std::filesystem::path path_ = directory_.path() / "pipe";
  const bool isMade_ = ::mkfifo(path_.c_str(), S_IRUSR | S_IWUSR) == 0;
  const int end_ = ::open(path_.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
};

}  // namespace qel::test
