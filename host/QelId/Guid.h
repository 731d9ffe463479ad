#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace qel {

/// A globally unique identifier: 16 bytes in the order of their text.
class Guid {
 public:
  /// The first byte is the first in the text.
  using Bytes = std::array<std::uint8_t, 16>;

  /// The null GUID, all bytes zero, or these bytes unchanged.
  /// @{
  Guid() = default;
  explicit Guid(const Bytes& bytes) : bytes_(bytes) {}
  /// @}

  /// A new random GUID (version 4 of RFC 4122).
  static Guid create();

  /// Reads 32 hexadecimal digits in groups of 8-4-4-4-12, of either case, with or without a pair of
  /// braces. Throws `qel::exception` for any other text.
  static Guid parse(std::string_view text);

  /// Whether all bytes are zero, which means no identifier.
  bool isNull() const { return *this == Guid(); }
  /// Valid as long as this object.
  const Bytes& bytes() const { return bytes_; }

  /// Upper-case hexadecimal digits in groups of 8-4-4-4-12, in braces if `braces` is set.
  std::string toString(bool braces) const;

  friend auto operator<=>(const Guid&, const Guid&) = default;

 private:
  Bytes bytes_{};
};

}  // namespace qel
