#include "tools/collector/UserFile.h"

#include <cerrno>
#include <fstream>
#include <set>
#include <system_error>

#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/PathText.h"
#include "tools/collector/PasswordHash.h"
#include "tools/common/ByteOrderMark.h"
#include "tools/common/InputError.h"

namespace qel::collector {
namespace {

constexpr const char* blanks = " \t\r";

UserLine parse(const std::string& line) {
  const auto colon = line.find(':');
  if (colon == std::string::npos || colon == 0 || colon + 1 == line.size()) {
    throw tools::InputError("is not of the form user:secret");
  }
  return {line.substr(0, colon), line.substr(colon + 1)};
}

/// Checks the form of a hash, and computes one hash for each set of parameters, because only
/// libcrypt can judge these.
void checkHash(const std::string& hash, std::set<std::string>& knownParameters) {
  if (knownParameters.insert(parametersOf(hash)).second && !hashOf("", hash)) {
    throw tools::InputError("has a malformed hash");
  }
}

}  // namespace

std::vector<UserLine> readUsers(std::istream& lines, const std::string& name, Secrets secrets) {
  std::vector<UserLine> users;
  std::set<std::string> names;
  std::set<std::string> parameters;
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    if (number == 1) {
      tools::removeByteOrderMark(line);
    }
    line.erase(line.find_last_not_of(blanks) + 1);
    if (line.empty() || line.front() == '#') {
      continue;
    }
    try {
      users.push_back(parse(line));
      if (!names.insert(users.back().user).second) {
        throw tools::InputError("names a user for the second time");
      }
      if (secrets == Secrets::PlainOrHashed && isHash(users.back().secret)) {
        checkHash(users.back().secret, parameters);
      }
    } catch (const tools::InputError& error) {
      throw tools::InputError(name + ':' + std::to_string(number) + ": " + error.what());
    }
  }
  if (users.empty()) {
    throw tools::InputError(name + ": holds no user");
  }
  return users;
}

std::vector<UserLine> readUsers(const std::filesystem::path& file, Secrets secrets) {
  const std::string name = utilities::utf8FromPath(file);
  std::ifstream lines(file);
  // Opening a directory succeeds, but reading it fails.
  if (!lines || (lines.peek() == std::ifstream::traits_type::eof() && !lines.eof())) {
    throw tools::InputError("cannot read the credentials file " + name + ": " +
                            std::generic_category().message(errno));
  }
  using std::filesystem::perms;
  std::error_code ignored;
  if ((std::filesystem::status(file, ignored).permissions() & perms::others_all) != perms::none) {
    log::LogManager::instance()
        .getLogger("qel.collector")
        ->log(log::Level::Warning, "other users of this machine may open " + name +
                                       ", which contains secrets: remove their access");
  }
  return readUsers(lines, name, secrets);
}

}  // namespace qel::collector
