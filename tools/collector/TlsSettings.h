#pragma once

#include <filesystem>

#include <openssl/ssl.h>

namespace qel::collector {

/// Sets a server's TLS context up: TLS 1.2 or newer, keys of few and cheap groups, no
/// renegotiation, this certificate and key (PEM). Throws `tools::InputError` that names the file at
/// fault, or `qel::exception`.
void setUpTls(SSL_CTX& context, const std::filesystem::path& certificate,
              const std::filesystem::path& key);

}  // namespace qel::collector
