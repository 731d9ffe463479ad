#include "tests/support/TestCertificates.h"

#include <cstdlib>
#include <stdexcept>

#include "tests/support/Files.h"

namespace qel::test {
namespace {

const std::string newKey = " -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes ";

void run(const std::filesystem::path& directory, const std::string& commands) {
  const std::string inside = "cd " + directory.string() + " && { " + commands + "; } 2>log";
  if (std::system(inside.c_str()) != 0) {  // NOLINT(cert-env33-c): nothing in it is from outside
    throw std::runtime_error("cannot make a certificate: " + contentOf(directory / "log"));
  }
}

}  // namespace

// Each authority has a name of its own: chains are built by name.
TestCertificates::TestCertificates() {
  run(directory_.path(), "openssl req -x509" + newKey + "-keyout ca.key -out ca.pem -subj /CN=" +
                             directory_.path().filename().string());
}

std::string TestCertificates::caFile() const { return directory_.path() / "ca.pem"; }

ServerIdentity TestCertificates::issue(const std::string& name, Validity validity) {
  const std::string stem = "server" + std::to_string(++issued_);
  run(directory_.path(),
      "openssl req" + newKey + "-keyout " + stem + ".key -out request -subj /CN=" + name +
          " -addext subjectAltName=DNS:" + name +
          " && openssl x509 -req -in request -copy_extensions copy -CA ca.pem -CAkey ca.key -out " +
          stem + ".pem -days " + (validity == Validity::Expired ? "-1" : "1"));
  return {directory_.path() / (stem + ".pem"), directory_.path() / (stem + ".key")};
}

}  // namespace qel::test
