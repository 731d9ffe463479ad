#pragma once

#include <cstdint>
#include <string>

#include "host/QelUtilities/Exception.h"

namespace qel::c {

/// A function of the C interface cannot do what it should. Carries the status that it returns.
class CallError : public qel::exception {
 public:
  CallError(std::int32_t status, const std::string& text) : qel::exception(text), status_(status) {}

  std::int32_t status() const { return status_; }

 private:
  std::int32_t status_;
};

}  // namespace qel::c
