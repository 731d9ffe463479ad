#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "tools/collector/Answer.h"

namespace qel::collector {

/// The request line and the headers of a request, as far as the collector uses them.
struct RequestHead {
  bool isUpload = false;  ///< whether the path is the one that is served
  bool isPost = false;
  std::string authorization;
  bool isPlainJson = false;  ///< whether the body is declared as uncompressed JSON
  /// The length of the body if it is given in the only form that all proxies interpret alike.
  std::optional<std::uint64_t> length;
  bool awaitsContinue = false;
  bool keepsConnection = false;
};

/// Parses a head, including the empty line at its end. Returns the refusal if it is malformed, or
/// if two programs could interpret it differently.
std::variant<RequestHead, Answer> parseHead(std::string_view head);

/// The answer that rejects a request because of its head; `std::nullopt` if the head is acceptable.
/// The second function requires that the credentials have been accepted.
/// @{
std::optional<Answer> objectionToTarget(const RequestHead& head);
std::optional<Answer> objectionToBody(const RequestHead& head, std::uint64_t largestBody);
/// @}

}  // namespace qel::collector
