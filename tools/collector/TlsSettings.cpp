#include "tools/collector/TlsSettings.h"

#include <string>

#include <openssl/err.h>
#include <openssl/x509.h>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "tools/common/InputError.h"

namespace qel::collector {
namespace {

/// Finite-field groups are excluded, because a handshake with one costs the server a tenth of a
/// second.
constexpr const char* keyGroups = "X25519:P-256:P-384";

[[noreturn]] void fail(const std::string& option, const std::filesystem::path& file) {
  const auto code = ERR_peek_error();
  ERR_clear_error();
  // OpenSSL has no strings for system errors.
  const char* const reason = ERR_SYSTEM_ERROR(code) ? nullptr : ERR_reason_error_string(code);
  throw tools::InputError(option + ' ' + utilities::utf8FromPath(file) + ": cannot be used (" +
                          (reason != nullptr ? reason : "not readable") + ')');
}

}  // namespace

void setUpTls(SSL_CTX& context, const std::filesystem::path& certificate,
              const std::filesystem::path& key) {
  SSL_CTX_set_min_proto_version(&context, TLS1_2_VERSION);
  SSL_CTX_set_options(&context, SSL_OP_NO_RENEGOTIATION | SSL_OP_CIPHER_SERVER_PREFERENCE);
  if (SSL_CTX_set1_groups_list(&context, keyGroups) != 1) {
    throw qel::exception(std::string("cannot set TLS up: no groups ") + keyGroups);
  }
  // Otherwise OpenSSL would ask on the terminal for the password of an encrypted key.
  SSL_CTX_set_default_passwd_cb(&context, [](char*, int, int, void*) { return 0; });
  ERR_clear_error();
  const std::string certificateName = utilities::utf8FromPath(certificate);
  const std::string keyName = utilities::utf8FromPath(key);
  if (SSL_CTX_use_certificate_chain_file(&context, certificateName.c_str()) != 1) {
    fail("--certificate", certificate);
  }
  // The first call does not notice a key whose type differs from the certificate's.
  if (SSL_CTX_use_PrivateKey_file(&context, keyName.c_str(), SSL_FILETYPE_PEM) != 1 ||
      SSL_CTX_check_private_key(&context) != 1) {
    fail("--key", key);
  }
}

std::chrono::system_clock::time_point certificateEnd(const SSL_CTX& context) {
  int days = 0;
  int seconds = 0;
  ASN1_TIME_diff(&days, &seconds, nullptr, X509_get0_notAfter(SSL_CTX_get0_certificate(&context)));
  return std::chrono::system_clock::now() + std::chrono::hours(24) * days +
         std::chrono::seconds(seconds);
}

}  // namespace qel::collector
