// The texts that are GUIDs, and no others, are read, and come back in upper case.

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/Check.h"
#include "host/QelId/Guid.h"
#include "host/QelUtilities/Exception.h"

namespace qel {
namespace {

/// The text without its braces and in upper case when it is a GUID.
std::optional<std::string> upperCaseGuid(std::string text) {
  constexpr std::string_view shape = "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX";
  if (text.size() == shape.size() + 2 && text.front() == '{' && text.back() == '}') {
    text = text.substr(1, shape.size());
  }
  const bool fits =
      std::equal(text.begin(), text.end(), shape.begin(), shape.end(),
                 [](unsigned char character, char expected) {
                   return expected == 'X' ? std::isxdigit(character) != 0 : character == expected;
                 });
  if (!fits) {
    return std::nullopt;
  }
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char digit) { return static_cast<char>(std::toupper(digit)); });
  return text;
}

std::optional<Guid> parsed(const std::string& text) {
  try {
    return Guid::parse(text);
  } catch (const qel::exception&) {
    return std::nullopt;
  }
}

}  // namespace
}  // namespace qel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using qel::fuzz::check;
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto guid = qel::parsed(text);
  const auto expected = qel::upperCaseGuid(text);
  check(guid.has_value() == expected.has_value(), "exactly the texts of GUIDs are read");
  if (guid) {
    check(guid->toString(false) == *expected, "a GUID comes back in upper case");
    check(guid->toString(true) == '{' + *expected + '}', "a GUID comes back in braces");
  }
  return 0;
}
