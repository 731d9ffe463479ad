#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>

#include <boost/asio/ip/tcp.hpp>

namespace qel::collector {

/// Logs connections that are cut because there are too many: one line for all of ten seconds,
/// because they can come faster than the log can be written.
///
/// **Threads.** Used by one thread.
class CrowdLog {
 public:
  /// `beginning` of the line names the listener.
  explicit CrowdLog(std::string beginning = "") : beginning_(std::move(beginning)) {}

  void add(const boost::asio::ip::tcp::endpoint& peer);

 private:
  const std::string beginning_;
  std::size_t unlogged_ = 0;
  std::chrono::steady_clock::time_point nextLine_;
};

}  // namespace qel::collector
