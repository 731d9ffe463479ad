#include "tools/collector/Credentials.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <set>
#include <system_error>

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include "host/QelUtilities/PathText.h"
#include "tools/common/InputError.h"

namespace qel::collector {
namespace {

constexpr std::string_view scheme = "Basic ";

std::string base64(const std::string& text) {
  std::string encoded((text.size() + 2) / 3 * 4 + 1, '\0');
  const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()),
                                     reinterpret_cast<const unsigned char*>(text.data()),
                                     static_cast<int>(text.size()));
  encoded.resize(static_cast<std::size_t>(length));
  return encoded;
}

}  // namespace

Credentials::Credentials(std::istream& lines, const std::string& name) {
  std::set<std::string> users;
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    const auto refuse = [&](const char* why) {
      throw tools::InputError(name + ':' + std::to_string(number) + ": " + why);
    };
    if (!line.empty() && line.back() == '\r') {
      line.pop_back();
    }
    if (line.find_first_not_of(" \t") == std::string::npos || line.front() == '#') {
      continue;
    }
    const auto colon = line.find(':');
    if (colon == std::string::npos || colon == 0 || colon + 1 == line.size()) {
      refuse("is not of the form user:secret");
    }
    if (!users.insert(line.substr(0, colon)).second) {
      refuse("names a user for the second time");
    }
    tokens_.push_back(sha256(base64(line)));
  }
  if (tokens_.empty()) {
    throw tools::InputError(name + ": holds no user");
  }
}

Credentials Credentials::fromFile(const std::filesystem::path& file) {
  const std::string name = utilities::utf8FromPath(file);
  std::ifstream lines(file);
  // Opening a directory succeeds, but reading it fails.
  if (!lines || (lines.peek() == std::ifstream::traits_type::eof() && !lines.eof())) {
    throw tools::InputError("cannot read the credentials file " + name + ": " +
                            std::generic_category().message(errno));
  }
  return {lines, name};
}

bool Credentials::accept(std::string_view authorization) const {
  if (authorization.substr(0, scheme.size()) != scheme) {
    return false;
  }
  const Sha256 given = sha256(authorization.substr(scheme.size()));
  bool known = false;
  for (const Sha256& token : tokens_) {
    // The loop never ends early, so its duration does not depend on a match.
    known |= CRYPTO_memcmp(given.data(), token.data(), given.size()) == 0;
  }
  return known;
}

}  // namespace qel::collector
