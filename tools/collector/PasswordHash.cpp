#include "tools/collector/PasswordHash.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string_view>

#include <crypt.h>

#include "tools/common/InputError.h"

namespace qel::collector {
namespace {

struct Method {
  std::string_view prefix;
  std::size_t lastField;  ///< length of the text after the last `$`
  bool hasSaltField;      ///< otherwise the last field begins with the salt
};

constexpr std::array methods{
    Method{"$y$", 43, true},   Method{"$2a$", 53, false}, Method{"$2b$", 53, false},
    Method{"$2y$", 53, false}, Method{"$6$", 86, true},
};

constexpr const char* letters =
    "$=./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

}  // namespace

bool isHash(const std::string& secret) {
  return secret.front() == '$' && secret.find('$', 1) != std::string::npos;
}

std::string parametersOf(const std::string& hash) {
  const auto* const method = std::find_if(methods.begin(), methods.end(), [&](const Method& known) {
    return hash.starts_with(known.prefix);
  });
  if (method == methods.end()) {
    throw tools::InputError("has a hash of a method that is not supported");
  }
  const auto last = hash.rfind('$');
  const auto end = method->hasSaltField ? hash.rfind('$', last - 1) : last;
  if (hash.size() - last - 1 != method->lastField || end + 1 < method->prefix.size() ||
      hash.find_first_not_of(letters) != std::string::npos ||
      crypt_checksalt(hash.c_str()) != CRYPT_SALT_OK) {
    throw tools::InputError("has a malformed hash");
  }
  return hash.substr(0, end);
}

std::optional<std::string> hashOf(const std::string& secret, const std::string& like) {
  const auto workspace = std::make_unique<crypt_data>();
  const char* const hash =
      crypt_rn(secret.c_str(), like.c_str(), workspace.get(), sizeof(crypt_data));
  // libcrypt reads only up to the first NUL.
  return hash == nullptr || secret.find('\0') != std::string::npos
             ? std::nullopt
             : std::optional<std::string>(hash);
}

}  // namespace qel::collector
