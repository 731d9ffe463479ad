#pragma once

#include <filesystem>
#include <string>

#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

/// Files (PEM) that a server proves itself with.
struct ServerIdentity {
  std::filesystem::path certificate;
  std::filesystem::path key;
};

enum class Validity { Current, Expired };

/// A throw-away certificate authority, made with the `openssl` command, and the servers it
/// certifies. The files are removed with it.
class TestCertificates {
 public:
  TestCertificates();

  /// The authority's own certificate, to be trusted (PEM).
  std::string caFile() const;

  /// A certificate for the host name.
  ServerIdentity issue(const std::string& name, Validity validity = Validity::Current);

 private:
  const TemporaryDirectory directory_;
  int issued_ = 0;
};

}  // namespace qel::test
