#include "tools/records/SessionChoice.h"

#include "tools/common/InputError.h"

namespace qel::records {
namespace {

/// Without braces and hyphens, and with ASCII letters in upper case.
std::string normalized(std::string_view id) {
  std::string result;
  for (const char letter : id) {
    if (letter != '{' && letter != '}' && letter != '-') {
      const bool isLower = letter >= 'a' && letter <= 'z';
      result += static_cast<char>(isLower ? letter - 'a' + 'A' : letter);
    }
  }
  return result;
}

}  // namespace

SessionChoice::SessionChoice(const std::string& text)
    : text_(text), isLast_(text == "last"), beginning_(normalized(text)) {
  const bool canBegin =
      !beginning_.empty() && beginning_.find_first_not_of("0123456789ABCDEF") == std::string::npos;
  if (!isLast_ && !canBegin) {
    throw tools::InputError("--session: " + text +
                            R"( is neither the beginning of a session's ID nor "last")");
  }
}

bool SessionChoice::isExactly(std::string_view id) const { return normalized(id) == beginning_; }

bool SessionChoice::begins(std::string_view id) const {
  return normalized(id).starts_with(beginning_);
}

}  // namespace qel::records
