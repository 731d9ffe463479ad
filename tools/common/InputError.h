#pragma once

#include "host/QelUtilities/Exception.h"

namespace qel::tools {

/// The user's input is invalid. The message names the option, or the file and line.
class InputError : public qel::exception {
 public:
  using qel::exception::exception;
};

}  // namespace qel::tools
