#include "tools/collector/Sha256.h"

#include <openssl/evp.h>

#include "host/QelUtilities/Exception.h"

namespace qel::collector {

Sha256 sha256(std::string_view text) {
  static const EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "SHA256", nullptr);
  Sha256 digest{};
  unsigned int length = 0;
  if (EVP_Digest(text.data(), text.size(), digest.data(), &length, algorithm, nullptr) != 1 ||
      length != digest.size()) {
    throw qel::exception("cannot compute a SHA-256 digest");
  }
  return digest;
}

}  // namespace qel::collector
