#pragma once

#include <stdexcept>

namespace qel {

/// An error that the caller of an operation is told about, with a message fit for a log.
// NOLINTNEXTLINE(readability-identifier-naming): the name is the host framework's.
class exception : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace qel
