#pragma once

#include <chrono>
#include <filesystem>
#include <memory>

#include <boost/asio/ssl/context.hpp>

namespace qel::collector {

using TlsContext = std::shared_ptr<boost::asio::ssl::context>;

/// A server's TLS context: TLS 1.2 or newer, only key groups that are cheap to compute, no static
/// RSA, no CBC, no renegotiation, and the certificate and key (PEM). Throws `tools::InputError`,
/// which names the file, if a file cannot be used. Throws `qel::exception` if the TLS library lacks
/// the groups or suites.
TlsContext makeTlsContext(const std::filesystem::path& certificate,
                          const std::filesystem::path& key);

/// When the context's certificate expires.
std::chrono::system_clock::time_point certificateEnd(boost::asio::ssl::context& context);

}  // namespace qel::collector
