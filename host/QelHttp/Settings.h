#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace qel::protocol::https {

/// How this process connects to servers. The host sets it once, before the first request.
struct Settings {
  /// A PEM file with the only certificates to trust. Empty: the system's certificates.
  std::string caBundle;
  /// Connections to the host `connectFor` (as written in `Message::host`) go to this "address:port"
  /// instead. The certificate is still checked against the name. Empty: no redirection.
  /// @{
  std::string connectTo;
  std::string connectFor;
  /// @}
  /// Proxy URL. Empty: no proxy, whatever the environment variables contain.
  std::string proxy;
  /// For name resolution, connection and TLS handshake together; at least 1 ms.
  std::chrono::milliseconds connectTimeout{10'000};
  /// For a whole exchange; at least 1 ms.
  std::chrono::milliseconds totalTimeout{120'000};
  /// An exchange fails if it is slower than this for the given time, also while the server prepares
  /// its answer. If either is 0, no exchange fails for this reason.
  /// @{
  long lowSpeedBytesPerSecond = 100;
  std::chrono::seconds lowSpeedTime{30};
  /// @}
  /// Largest answer with headers, in bytes.
  std::size_t largestResponse = std::size_t{1024} * 1024;
};

/// Replaces the settings of the process. Exchanges under way keep their settings. Connections with
/// earlier settings are not used again. Any thread.
void setSettings(const Settings& settings);
/// A copy of the last settings, or of the defaults. Any thread.
Settings getSettings();

}  // namespace qel::protocol::https
