#include "tests/support/TestCertificates.h"

#include <stdexcept>

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

namespace qel::test {
namespace {

template <auto end>
struct EndBy {
  template <typename Object>
  void operator()(Object* object) const {
    end(object);
  }
};
using Key = std::unique_ptr<EVP_PKEY, EndBy<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, EndBy<X509_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, EndBy<X509_EXTENSION_free>>;
using File = std::unique_ptr<BIO, EndBy<BIO_free>>;

void require(bool succeeded, const char* what) {
  if (!succeeded) {
    throw std::runtime_error(std::string("cannot make a certificate: ") + what + ": " +
                             ERR_error_string(ERR_get_error(), nullptr));
  }
}

Key makeKey() {
  Key key(EVP_EC_gen("P-256"));
  require(key != nullptr, "key");
  return key;
}

void addExtension(X509* certificate, int kind, const std::string& value) {
  const Extension extension(X509V3_EXT_conf_nid(nullptr, nullptr, kind, value.c_str()));
  require(extension && X509_add_ext(certificate, extension.get(), -1) == 1, value.c_str());
}

/// A certificate that lacks its issuer, its extensions and its signature.
Certificate makeBlank(EVP_PKEY* key, const std::string& name, int serial, Validity validity) {
  constexpr long day = 86'400;
  Certificate certificate(X509_new());
  X509* const raw = certificate.get();
  const bool expired = validity == Validity::Expired;
  X509_NAME* const subject = X509_get_subject_name(raw);
  const auto* const text = reinterpret_cast<const unsigned char*>(name.c_str());
  require(X509_set_version(raw, X509_VERSION_3) == 1 &&
              ASN1_INTEGER_set(X509_get_serialNumber(raw), serial) == 1 &&
              X509_gmtime_adj(X509_getm_notBefore(raw), -2 * day) != nullptr &&
              X509_gmtime_adj(X509_getm_notAfter(raw), expired ? -day : day) != nullptr &&
              X509_set_pubkey(raw, key) == 1 &&
              X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8, text, -1, -1, 0) == 1,
          "fields");
  return certificate;
}

void sign(X509* certificate, const X509* issuer, EVP_PKEY* issuersKey) {
  require(X509_set_issuer_name(certificate, X509_get_subject_name(issuer)) == 1 &&
              X509_sign(certificate, issuersKey, EVP_sha256()) > 0,
          "signature");
}

File fileFor(const std::filesystem::path& path) {
  File file(BIO_new_file(path.c_str(), "w"));
  require(file != nullptr, path.c_str());
  return file;
}

void write(const std::filesystem::path& path, X509* certificate) {
  require(PEM_write_bio_X509(fileFor(path).get(), certificate) == 1, path.c_str());
}

void write(const std::filesystem::path& path, EVP_PKEY* key) {
  require(PEM_write_bio_PrivateKey(fileFor(path).get(), key, nullptr, nullptr, 0, nullptr,
                                   nullptr) == 1,
          path.c_str());
}

}  // namespace

struct TestCertificates::Authority {
  std::string name;
  Key key = makeKey();
  Certificate certificate = makeBlank(key.get(), name, 1, Validity::Current);
};

// Each authority has a name of its own: chains are built by name.
TestCertificates::TestCertificates()
    : authority_(new Authority{"Authority " + directory_.path().filename().string()}) {
  X509* const own = authority_->certificate.get();
  addExtension(own, NID_basic_constraints, "critical,CA:TRUE");
  addExtension(own, NID_key_usage, "critical,keyCertSign");
  sign(own, own, authority_->key.get());
  write(caFile(), own);
}

TestCertificates::~TestCertificates() = default;

std::string TestCertificates::caFile() const { return directory_.path() / "ca.pem"; }

ServerIdentity TestCertificates::issue(const std::string& name, Validity validity) {
  const std::string stem = "server" + std::to_string(++issued_);
  ServerIdentity identity{directory_.path() / (stem + ".pem"), directory_.path() / (stem + ".key")};
  const Key key = makeKey();
  const Certificate certificate = makeBlank(key.get(), name, issued_ + 1, validity);
  addExtension(certificate.get(), NID_subject_alt_name, "DNS:" + name);
  sign(certificate.get(), authority_->certificate.get(), authority_->key.get());
  write(identity.certificate, certificate.get());
  write(identity.key, key.get());
  return identity;
}

}  // namespace qel::test
