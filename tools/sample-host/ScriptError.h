#pragma once

#include <stdexcept>

namespace qel::samplehost {

/// A fault in a session script. The message fits one line.
class ScriptError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace qel::samplehost
