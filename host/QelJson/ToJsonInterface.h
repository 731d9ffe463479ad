#pragma once

#include <string>

namespace qel::json {

/// An object that renders itself as one JSON text.
class ToJsonInterface {
 public:
  virtual ~ToJsonInterface() = default;

  /// May be called on a different thread from the one that created the object. Should not throw,
  /// because an exception may stop the storage permanently.
  virtual std::string toJson() const = 0;
};

}  // namespace qel::json
