#pragma once

#include "host/QelUtilities/Exception.h"

namespace qel::tools {

/// What the user gave a program is wrong; the message names the option, or the file and line.
class InputError : public qel::exception {
 public:
  using qel::exception::exception;
};

}  // namespace qel::tools
