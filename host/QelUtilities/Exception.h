#pragma once

#include <stdexcept>

namespace qel {

/// An error that an operation reports to its caller. The message may be logged.
// NOLINTNEXTLINE(readability-identifier-naming): the name is the host framework's.
class exception : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace qel
