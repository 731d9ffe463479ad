#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace qel::protocol::https {

/// How this process connects to servers. The host should set this once, before the first request.
struct Settings {
  /// A PEM file with the only certificates to trust. If empty, the system's certificates are
  /// trusted.
  std::string caBundle;
  /// Connections to the host `connectFor` (as written in `Message::host`) go to the "address:port"
  /// in `connectTo` instead. The certificate is still checked against the host's name. If
  /// `connectTo` is empty, connections go to the host itself.
  /// @{
  std::string connectTo;
  std::string connectFor;
  /// @}
  /// The proxy's URL. If empty, no proxy is used, whatever the environment variables contain.
  std::string proxy;
  /// Time limit for name resolution, connection and TLS handshake together; at least 1 ms.
  std::chrono::milliseconds connectTimeout{10'000};
  /// Time limit for a whole exchange; at least 1 ms.
  std::chrono::milliseconds totalTimeout{120'000};
  /// An exchange fails if it is slower than `lowSpeedBytesPerSecond` for `lowSpeedTime`, even while
  /// the server prepares its response. If either is 0, no exchange fails for this reason.
  /// @{
  long lowSpeedBytesPerSecond = 100;
  std::chrono::seconds lowSpeedTime{30};
  /// @}
  /// The largest allowed response with its headers, in bytes.
  std::size_t largestResponse = std::size_t{1024} * 1024;
};

/// Replaces the settings of the process. Exchanges in flight keep their settings. Connections with
/// earlier settings are not used again. Thread-safe.
void setSettings(const Settings& settings);
/// A copy of the current settings; the defaults if none were set. Thread-safe.
Settings getSettings();

}  // namespace qel::protocol::https
