#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace qel::protocol::https {

/// How this process reaches servers. The host application sets it once, before the first request.
struct Settings {
  /// File of trusted certificates (PEM), which are then the only ones; empty: the system's.
  std::string caBundle;
  /// Where connections to `connectFor`, spelt as in `Message::host`, go instead of that name's own
  /// address, as "address:port"; the certificate is still checked against the name. Empty: nowhere
  /// else.
  /// @{
  std::string connectTo;
  std::string connectFor;
  /// @}
  /// Proxy URL; empty: none (environment variables are not asked).
  std::string proxy;
  /// For the name's look-up, the connection and the TLS handshake; at least 1 ms.
  std::chrono::milliseconds connectTimeout{10'000};
  /// For a whole exchange; at least 1 ms.
  std::chrono::milliseconds totalTimeout{120'000};
  /// An exchange slower than this many bytes a second for the given time is given up, which also
  /// ends the wait for a server that works on its answer. Either 0: never.
  /// @{
  long lowSpeedBytesPerSecond = 100;
  std::chrono::seconds lowSpeedTime{30};
  /// @}
  /// Largest answer, headers included, in bytes.
  std::size_t largestResponse = std::size_t{1024} * 1024;
};

/// Replaces the process-wide settings. Exchanges under way keep theirs; connections made under
/// earlier ones are not used again. Any thread.
void setSettings(const Settings& settings);
/// A copy of what `setSettings` was given last, or of the defaults. Any thread.
Settings getSettings();

}  // namespace qel::protocol::https
