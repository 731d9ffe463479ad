#pragma once

#include <chrono>
#include <cstddef>

namespace qel::collector {

/// The limits of connections and requests. Sizes are in bytes.
struct Limits {
  std::size_t connections = 20'000;
  std::size_t head = std::size_t{32} << 10;
  /// Far larger than any row a client can store, because a row that the server always rejects would
  /// block all later rows.
  std::size_t body = std::size_t{64} << 20;
  std::size_t bytesInFlight = std::size_t{256} << 20;
  /// Parsing a malicious body takes several times its size in memory, so only one body above this
  /// size is parsed at a time. A client's body has at most a million bytes plus one row.
  std::size_t largeBody = std::size_t{2} << 20;

  std::chrono::seconds headTime{10};    ///< from the start or the last answer to the end of a head
  std::chrono::seconds answerTime{10};  ///< to send an answer
  /// A body is cut if it does not grow by `progress` within `progressTime`.
  std::chrono::seconds progressTime{10};
  std::size_t progress = std::size_t{4} << 10;
  /// After the last answer, the time in which further bytes are read and discarded. Otherwise the
  /// system would reset the connection, and the client could lose the answer.
  std::chrono::seconds lingerTime{5};
};

}  // namespace qel::collector
