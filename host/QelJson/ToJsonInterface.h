#pragma once

#include <string>

namespace qel::json {

/// An object that renders itself as one JSON text.
class ToJsonInterface {
 public:
  virtual ~ToJsonInterface() = default;

  /// May be called on another thread than the one that made the object. Should not throw, since an
  /// exception may end the storage for good.
  virtual std::string toJson() const = 0;
};

}  // namespace qel::json
