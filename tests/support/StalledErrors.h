#pragma once

#include <array>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace qel::test {

/// Replaces standard error by a full pipe, until the destructor. Nobody reads the pipe.
class StalledErrors {
 public:
  StalledErrors() {
    EXPECT_EQ(pipe(ends_.data()), 0);
    const auto size = static_cast<std::size_t>(fcntl(ends_[1], F_SETPIPE_SZ, 1));  // rounded up
    EXPECT_GT(::write(ends_[1], std::string(size, '\n').data(), size), 0);
    dup2(ends_[1], 2);
  }
  ~StalledErrors() {
    dup2(errors_, 2);
    for (const int file : {errors_, ends_[0], ends_[1]}) {
      close(file);
    }
  }
  StalledErrors(const StalledErrors&) = delete;
  StalledErrors& operator=(const StalledErrors&) = delete;

  /// The descriptor of the pipe's end for writing.
  int end() const { return ends_[1]; }

 private:
  std::array<int, 2> ends_{};
  const int errors_ = dup(2);
};

}  // namespace qel::test
