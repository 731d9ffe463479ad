#include "tools/collector/TlsSettings.h"

#include <ctime>
#include <string>

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "tools/common/InputError.h"

namespace qel::collector {
namespace {

/// Finite-field groups are excluded, because a handshake with one costs the server a tenth of a
/// second.
constexpr const char* keyGroups = "X25519:P-256:P-384";

/// For TLS 1.2. All suites of TLS 1.3 are acceptable.
constexpr const char* suites = "ECDHE+AESGCM:ECDHE+CHACHA20";

[[noreturn]] void fail(const std::string& option, const std::filesystem::path& file) {
  const auto code = ERR_peek_error();
  ERR_clear_error();
  // OpenSSL has no strings for system errors.
  const char* const reason = ERR_SYSTEM_ERROR(code) ? nullptr : ERR_reason_error_string(code);
  throw tools::InputError(option + ' ' + utilities::utf8FromPath(file) + ": cannot be used (" +
                          (reason != nullptr ? reason : "not readable") + ')');
}

}  // namespace

TlsContext makeTlsContext(const std::filesystem::path& certificate,
                          const std::filesystem::path& key) {
  auto result = std::make_shared<boost::asio::ssl::context>(boost::asio::ssl::context::tls_server);
  SSL_CTX* const context = result->native_handle();
  SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
  SSL_CTX_set_options(context, SSL_OP_NO_RENEGOTIATION | SSL_OP_CIPHER_SERVER_PREFERENCE);
  SSL_CTX_set_mode(context, SSL_MODE_RELEASE_BUFFERS);
  // Tickets resume sessions without memory of the server.
  SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF);
  if (SSL_CTX_set1_groups_list(context, keyGroups) != 1 ||
      SSL_CTX_set_cipher_list(context, suites) != 1) {
    throw qel::exception(std::string("cannot set TLS up: no ") + keyGroups + " or no " + suites);
  }
  // Otherwise OpenSSL would ask on the terminal for the password of an encrypted key.
  SSL_CTX_set_default_passwd_cb(context, [](char*, int, int, void*) { return 0; });
  ERR_clear_error();
  const std::string certificateName = utilities::utf8FromPath(certificate);
  const std::string keyName = utilities::utf8FromPath(key);
  if (SSL_CTX_use_certificate_chain_file(context, certificateName.c_str()) != 1) {
    fail("--certificate", certificate);
  }
  // The first call does not notice a key whose type differs from the certificate's.
  if (SSL_CTX_use_PrivateKey_file(context, keyName.c_str(), SSL_FILETYPE_PEM) != 1 ||
      SSL_CTX_check_private_key(context) != 1) {
    fail("--key", key);
  }
  return result;
}

std::chrono::system_clock::time_point certificateEnd(boost::asio::ssl::context& context) {
  std::tm end{};
  ASN1_TIME_to_tm(X509_get0_notAfter(SSL_CTX_get0_certificate(context.native_handle())), &end);
  return std::chrono::system_clock::from_time_t(timegm(&end));
}

}  // namespace qel::collector
