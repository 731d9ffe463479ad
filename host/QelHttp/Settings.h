#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace qel::protocol::https {

/// How this process reaches servers. The host application sets it once, before the first request.
struct Settings {
  /// File of trusted certificates (PEM); empty: the system's.
  std::string caBundle;
  /// Where connections to `connectFor` go instead of that name's own address, as "address:port";
  /// the certificate is still checked against the name. Empty: nowhere else.
  std::string connectTo;
  std::string connectFor;
  /// Proxy URL; empty: none (environment variables are not asked).
  std::string proxy;
  std::chrono::milliseconds connectTimeout{10'000};
  /// For a whole exchange.
  std::chrono::milliseconds totalTimeout{120'000};
  /// An exchange slower than this many bytes a second for the given time is given up.
  long lowSpeedBytesPerSecond = 100;
  std::chrono::seconds lowSpeedTime{30};
  /// Largest answer, headers included, in bytes.
  std::size_t largestResponse = std::size_t{1024} * 1024;
};

/// Replaces the process-wide settings; requests under way keep theirs. Any thread.
void setSettings(const Settings& settings);
Settings getSettings();

/// From now on no exchange of this process outlives `fromNow`: one in flight is ended then, later
/// ones fail at once. The host arms it just before it releases what sends. An empty value disarms.
/// Any thread.
void setExitDeadline(std::optional<std::chrono::milliseconds> fromNow);

}  // namespace qel::protocol::https
