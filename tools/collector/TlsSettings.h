#pragma once

#include <chrono>
#include <filesystem>

#include <openssl/ssl.h>

namespace qel::collector {

/// Configures a server's TLS context: TLS 1.2 or newer, only key groups that are cheap to compute,
/// no renegotiation, and the certificate and key (PEM). Throws `tools::InputError`, which names the
/// file, if a file cannot be used. Throws `qel::exception` if the TLS library lacks the key groups.
void setUpTls(SSL_CTX& context, const std::filesystem::path& certificate,
              const std::filesystem::path& key);

/// When the certificate of a context expires.
std::chrono::system_clock::time_point certificateEnd(const SSL_CTX& context);

}  // namespace qel::collector
