#pragma once

#include <string>

namespace qel::json {

/// Something that renders itself as one JSON text.
class ToJsonInterface {
 public:
  virtual ~ToJsonInterface() = default;

  virtual std::string toJson() const = 0;
};

}  // namespace qel::json
