#include "tools/collector/ClickHouseAccess.h"

#include <algorithm>
#include <string_view>

#include "host/QelUtilities/PathText.h"
#include "tools/collector/UserFile.h"
#include "tools/common/InputError.h"

namespace qel::collector {
namespace {

constexpr std::string_view plain = "clickhouse://";
constexpr std::string_view encrypted = "clickhouses://";

/// Whether a name needs no quotation marks in a statement.
bool isPlainName(const std::string& name) {
  const auto isLetter = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
  };
  return !name.empty() && isLetter(name.front()) &&
         std::ranges::all_of(name, [&](char c) { return isLetter(c) || (c >= '0' && c <= '9'); });
}

}  // namespace

std::string toText(const ClickHouseAccess& access) {
  return std::string(access.isEncrypted ? encrypted : plain) + tools::toText(access.server) + '/' +
         access.database;
}

std::optional<ClickHouseAccess> parseClickHouse(const std::string& option,
                                                const std::string& text) {
  if (text.find("://") == std::string::npos) {
    return std::nullopt;
  }
  ClickHouseAccess access;
  access.isEncrypted = text.starts_with(encrypted);
  if (!access.isEncrypted && !text.starts_with(plain)) {
    throw tools::InputError(option + ": neither a file nor clickhouse://HOST:PORT/DATABASE");
  }
  if (text.find('@') != std::string::npos) {
    throw tools::InputError(option + ": user and password belong into --store-credentials");
  }
  const std::string rest = text.substr(access.isEncrypted ? encrypted.size() : plain.size());
  const auto slash = rest.find('/');
  if (slash == std::string::npos || !isPlainName(rest.substr(slash + 1))) {
    throw tools::InputError(option + ": is not of the form clickhouse://HOST:PORT/DATABASE");
  }
  access.server = tools::parseEndpoint(option, rest.substr(0, slash), 1);
  access.database = rest.substr(slash + 1);
  return access;
}

void readCredentials(const std::string& file, ClickHouseAccess& access) {
  const auto lines = readUsers(utilities::pathFromUtf8(file), Secrets::Plain);
  if (lines.size() != 1) {
    throw tools::InputError(file + ": must have one line user:password");
  }
  access.user = lines.front().user;
  access.password = lines.front().secret;
}

}  // namespace qel::collector
