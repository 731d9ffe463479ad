#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace qel {

/// A globally unique identifier: 16 bytes in the order in which their text is written.
class Guid {
 public:
  /// The first byte is the first in the text.
  using Bytes = std::array<std::uint8_t, 16>;

  /// The null GUID, all bytes zero, or these bytes as they are.
  /// @{
  Guid() = default;
  explicit Guid(const Bytes& bytes) : bytes_(bytes) {}
  /// @}

  /// A new random GUID (version 4 of RFC 4122).
  static Guid create();

  /// Reads 32 hexadecimal digits of either case in groups of 8-4-4-4-12, with or without a pair of
  /// braces around them. Throws `qel::exception` for anything else.
  static Guid parse(std::string_view text);

  /// Whether all bytes are zero, which stands for no identifier.
  bool isNull() const { return *this == Guid(); }
  /// Valid as long as this object.
  const Bytes& bytes() const { return bytes_; }

  /// Upper-case hexadecimal in groups of 8-4-4-4-12, with braces around it when `braces` is set.
  std::string toString(bool braces) const;

  friend auto operator<=>(const Guid&, const Guid&) = default;

 private:
  Bytes bytes_{};
};

}  // namespace qel
