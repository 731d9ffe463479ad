#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace qel {

/// A globally unique identifier: 16 bytes in the order in which they are written.
class Guid {
 public:
  /// The 16 bytes, starting with the byte that is written first.
  using Bytes = std::array<std::uint8_t, 16>;

  /// The null GUID (all bytes are zero), or a GUID with the given bytes.
  /// @{
  Guid() = default;
  explicit Guid(const Bytes& bytes) : bytes_(bytes) {}
  /// @}

  /// A new random GUID (version 4 of RFC 4122).
  static Guid create();

  /// Parses 32 hexadecimal digits of either case in groups of 8-4-4-4-12, with or without a pair of
  /// braces. Throws `qel::exception` for any other string.
  static Guid parse(std::string_view text);

  /// True if all bytes are zero (the null GUID).
  bool isNull() const { return *this == Guid(); }
  /// The bytes. The reference is valid as long as this object exists.
  const Bytes& bytes() const { return bytes_; }

  /// Upper-case hexadecimal digits in groups of 8-4-4-4-12, in braces if `braces` is true.
  std::string toString(bool braces) const;

  friend auto operator<=>(const Guid&, const Guid&) = default;

 private:
  Bytes bytes_{};
};

}  // namespace qel
