#pragma once

#include <charconv>
#include <sstream>
#include <string>
#include <system_error>

#include "tools/common/InputError.h"

namespace qel::tools {

/// Parses the value of `option` as a decimal number. Throws `InputError` unless it is a number from
/// `lowest` to `highest`. `kind` names the expected value in the message.
template <typename Number>
Number parseNumber(const std::string& option, const std::string& text, Number lowest,
                   Number highest, const char* kind) {
  Number number{};
  const auto* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stopped != end || !(number >= lowest && number <= highest)) {
    std::ostringstream message;
    message << option << ": \"" << text << "\" is not " << kind << " from " << lowest << " to "
            << highest;
    throw InputError(message.str());
  }
  return number;
}

}  // namespace qel::tools
