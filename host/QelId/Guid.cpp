#include "host/QelId/Guid.h"

#include <algorithm>
#include <stdexcept>

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/string_generator.hpp>
#include <boost/uuid/uuid.hpp>

#include "host/QelUtilities/Exception.h"

namespace qel {
namespace {

constexpr std::size_t lengthWithoutBraces = 36;
constexpr std::size_t lengthWithBraces = lengthWithoutBraces + 2;

Guid::Bytes bytesOf(const boost::uuids::uuid& id) {
  Guid::Bytes bytes;
  std::copy(id.begin(), id.end(), bytes.begin());
  return bytes;
}

/// Whether a hyphen precedes the byte with this index in the text.
bool beginsGroup(std::size_t index) {
  return index == 4 || index == 6 || index == 8 || index == 10;
}

}  // namespace

Guid Guid::create() { return Guid(bytesOf(boost::uuids::random_generator_pure()())); }

Guid Guid::parse(std::string_view text) {
  // Boost also accepts strings without hyphens. The length check rejects them.
  if (text.size() == lengthWithoutBraces || text.size() == lengthWithBraces) {
    try {
      return Guid(bytesOf(boost::uuids::string_generator()(text.begin(), text.end())));
    } catch (const std::runtime_error&) {
      // The statement below throws, as for a string of a wrong length.
    }
  }
  throw qel::exception("not a GUID: \"" + std::string(text) + '"');
}

std::string Guid::toString(bool braces) const {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string text;
  text.reserve(lengthWithBraces);
  if (braces) {
    text += '{';
  }
  for (std::size_t i = 0; i < bytes_.size(); ++i) {
    if (beginsGroup(i)) {
      text += '-';
    }
    text += digits[bytes_[i] >> 4];
    text += digits[bytes_[i] & 0xF];
  }
  if (braces) {
    text += '}';
  }
  return text;
}

}  // namespace qel
