#pragma once

#include <fcntl.h>
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

 private:
  const TemporaryDirectory directory_;
  const std::filesystem::path path_ = directory_.path() / "pipe";
  const bool isMade_ = ::mkfifo(path_.c_str(), S_IRUSR | S_IWUSR) == 0;
  const int end_ = ::open(path_.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
};

}  // namespace qel::test
