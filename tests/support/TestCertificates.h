#pragma once

#include <memory>

#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

enum class Validity { Current, Expired };

/// A temporary certificate authority. Its end removes the files.
///
/// The keys are RSA keys: Wine's Schannel refuses some valid ECDSA signatures. Each authority has a
/// key of its own; the servers of all authorities share one, because RSA keys take long to make.
class TestCertificates {
 public:
  TestCertificates();
  ~TestCertificates();

  /// The authority's own certificate (PEM), for clients to trust.
  std::string caFile() const;

  /// A PEM file with a certificate for the host name, and its key.
  std::filesystem::path issue(const std::string& name, Validity validity = Validity::Current);

 private:
  struct Authority;

  const TemporaryDirectory directory_;
  const std::unique_ptr<const Authority> authority_;
  int issued_ = 0;
};

}  // namespace qel::test
