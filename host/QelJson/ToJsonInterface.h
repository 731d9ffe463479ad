#pragma once

#include <string>

namespace qel::json {

/// Something that renders itself as one JSON text.
class ToJsonInterface {
 public:
  virtual ~ToJsonInterface() = default;

  /// May be called on another thread than the one that made the object. It should not throw: who
  /// stores such objects may give up for good then.
  virtual std::string toJson() const = 0;
};

}  // namespace qel::json
