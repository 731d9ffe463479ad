#pragma once

#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::test {

/// The certificate and key of a server (PEM files).
struct ServerIdentity {
  std::filesystem::path certificate;
  std::filesystem::path key;
};

enum class Validity { Current, Expired };

/// A temporary certificate authority, made with the `openssl` command. Its end removes the files.
class TestCertificates {
 public:
  TestCertificates() {
    run(std::string("openssl req -x509 ") + newKey + " -keyout ca.key -out ca.pem -subj /CN=" +
        directory_.path().filename().string());  // Chains are built by name.
  }

  /// The authority's own certificate (PEM), for clients to trust.
  std::string caFile() const { return directory_.path() / "ca.pem"; }

  /// A certificate for the host name.
  ServerIdentity issue(const std::string& name, Validity validity = Validity::Current) {
    const std::string stem = "server" + std::to_string(++issued_);
    run(std::string("openssl req ") + newKey + " -keyout " + stem +
        ".key -out request -subj /CN=" + name + " -addext subjectAltName=DNS:" + name +
        " && openssl x509 -req -in request -copy_extensions copy -CA ca.pem -CAkey ca.key -out " +
        stem + ".pem -days " + (validity == Validity::Expired ? "-1" : "1"));
    return {directory_.path() / (stem + ".pem"), directory_.path() / (stem + ".key")};
  }

 private:
  static constexpr const char* newKey = "-newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes";

  void run(const std::string& commands) const {
    const std::string inside = "cd " + directory_.text() + " && { " + commands + "; } 2>log";
    if (std::system(inside.c_str()) != 0) {  // NOLINT(cert-env33-c): nothing in it is from outside
      throw std::runtime_error(contentOf(directory_.path() / "log"));
    }
  }

  const TemporaryDirectory directory_;
  int issued_ = 0;
};

}  // namespace qel::test
