// The texts that are GUIDs, and no others, are read, and come back in upper case.

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <regex>
#include <string>

#include "fuzz/Check.h"
#include "host/QelId/Guid.h"
#include "host/QelUtilities/Exception.h"

namespace {

const std::string plain = "[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}";
const std::regex shape(plain + "|\\{" + plain + "\\}");

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using qel::fuzz::check;
  std::string text(reinterpret_cast<const char*>(data), size);
  const bool isGuid = std::regex_match(text, shape);
  try {
    const auto guid = qel::Guid::parse(text);
    check(isGuid, "no text but a GUID is read");
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char digit) { return static_cast<char>(std::toupper(digit)); });
    const bool isInBraces = text.front() == '{';
    check(guid.toString(isInBraces) == text, "a GUID comes back in upper case");
    check(guid.toString(true) == '{' + guid.toString(false) + '}', "braces are all that differs");
  } catch (const qel::exception&) {
    check(!isGuid, "every GUID is read");
  }
  return 0;
}
