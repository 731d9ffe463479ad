#pragma once

#include <filesystem>

#include <openssl/ssl.h>

namespace qel::collector {

/// Sets a server's TLS context up: TLS 1.2 or newer, keys of few groups that are cheap to compute,
/// no renegotiation, this certificate and key (PEM). Throws `tools::InputError`, which names the
/// invalid file, or `qel::exception`.
void setUpTls(SSL_CTX& context, const std::filesystem::path& certificate,
              const std::filesystem::path& key);

}  // namespace qel::collector
