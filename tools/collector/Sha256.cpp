#include "tools/collector/Sha256.h"

#include <openssl/evp.h>

#include "host/QelUtilities/Exception.h"

namespace qel::collector {

Sha256 sha256(std::string_view text) {
  Sha256 digest{};
  unsigned int length = 0;
  if (EVP_Digest(text.data(), text.size(), digest.data(), &length, EVP_sha256(), nullptr) != 1 ||
      length != digest.size()) {
    throw qel::exception("cannot compute a SHA-256 digest");
  }
  return digest;
}

}  // namespace qel::collector
