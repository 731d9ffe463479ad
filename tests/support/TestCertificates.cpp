#include "tests/support/TestCertificates.h"

#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include "host/QelUtilities/PathText.h"

namespace qel::test {
namespace {

constexpr long day = 24 * 60 * 60;

Key newKey() { return {EVP_RSA_gen(2048), EVP_PKEY_free}; }

/// A certificate without an issuer and a signature, valid for a day from now or until a day ago.
Certificate newCertificate(const std::string& name, const Key& key, Validity validity) {
  static int serial = 0;
  Certificate made(X509_new(), X509_free);
  X509_set_version(made.get(), X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(made.get()), ++serial);
  X509_gmtime_adj(X509_getm_notBefore(made.get()), -2 * day);
  X509_gmtime_adj(X509_getm_notAfter(made.get()), validity == Validity::Expired ? -day : day);
  X509_NAME_add_entry_by_txt(X509_get_subject_name(made.get()), "CN", MBSTRING_UTF8,
                             reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
  X509_set_pubkey(made.get(), key.get());
  return made;
}

void extend(const Certificate& certificate, int kind, const std::string& value) {
  const std::shared_ptr<X509_EXTENSION> extension(
      X509V3_EXT_conf_nid(nullptr, nullptr, kind, value.c_str()), X509_EXTENSION_free);
  X509_add_ext(certificate.get(), extension.get(), -1);
}

void sign(const Certificate& certificate, const Certificate& issuer, const Key& issuerKey) {
  X509_set_issuer_name(certificate.get(), X509_get_subject_name(issuer.get()));
  X509_sign(certificate.get(), issuerKey.get(), EVP_sha256());
}

/// Writes a PEM file with the certificate and, if it is not null, the key.
std::filesystem::path writePem(const std::filesystem::path& file, const Certificate& certificate,
                               const Key& key) {
  const std::shared_ptr<BIO> stream(BIO_new_file(utilities::utf8FromPath(file).c_str(), "w"),
                                    BIO_free);
  PEM_write_bio_X509(stream.get(), certificate.get());
  if (key != nullptr) {
    PEM_write_bio_PrivateKey(stream.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
  }
  return file;
}

}  // namespace

// Clients find the issuer of a certificate by its name, so that each authority needs its own.
TestCertificates::TestCertificates()
    : key_(newKey()),
      certificate_(newCertificate(utilities::utf8FromPath(directory_.path().filename()), key_,
                                  Validity::Current)) {
  extend(certificate_, NID_basic_constraints, "critical,CA:TRUE");
  sign(certificate_, certificate_, key_);
  writePem(directory_.path() / "ca.pem", certificate_, nullptr);
}

std::string TestCertificates::caFile() const { return directory_.text() + "/ca.pem"; }

std::filesystem::path TestCertificates::issue(const std::string& name, Validity validity) {
  static const Key key = newKey();
  const Certificate certificate = newCertificate(name, key, validity);
  extend(certificate, NID_subject_alt_name, "DNS:" + name);
  sign(certificate, certificate_, key_);
  return writePem(directory_.path() / ("server" + std::to_string(++issued_)), certificate, key);
}

}  // namespace qel::test
