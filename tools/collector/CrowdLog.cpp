#include "tools/collector/CrowdLog.h"

#include "tools/collector/Answer.h"

namespace qel::collector {
namespace {

constexpr std::chrono::seconds pauseBetweenLines{10};

}  // namespace

void CrowdLog::add(const boost::asio::ip::tcp::endpoint& peer) {
  ++unlogged_;
  const auto now = std::chrono::steady_clock::now();
  if (now >= nextLine_) {
    logCut(beginning_ + "too many connections: " + std::to_string(unlogged_) +
               " cut since the last such line, the last one",
           peer.address().to_string());
    unlogged_ = 0;
    nextLine_ = now + pauseBetweenLines;
  }
}

}  // namespace qel::collector
