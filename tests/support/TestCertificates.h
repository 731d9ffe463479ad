#pragma once

#include <memory>

#include <openssl/types.h>

#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

enum class Validity { Current, Expired };

using Key = std::shared_ptr<EVP_PKEY>;
using Certificate = std::shared_ptr<X509>;

/// A temporary certificate authority. Its end removes the files.
///
/// The keys are RSA keys: Wine's Schannel refuses some valid ECDSA signatures. Each authority has a
/// key of its own; the servers of all authorities share one, because RSA keys take long to make.
class TestCertificates {
 public:
  TestCertificates();

  /// The authority's own certificate (PEM), for clients to trust.
  std::string caFile() const;

  /// A PEM file with a certificate for the host name, and its key.
  std::filesystem::path issue(const std::string& name, Validity validity = Validity::Current);

 private:
  const TemporaryDirectory directory_;
  const Key key_;
  const Certificate certificate_;
  int issued_ = 0;
};

}  // namespace qel::test
