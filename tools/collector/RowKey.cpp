#include "tools/collector/RowKey.h"

#include <algorithm>

namespace qel::collector {
namespace {

constexpr std::size_t sessionBytes = 8;

}  // namespace

Sha256 keyOf(std::optional<std::string_view> session, const Sha256& digest) {
  if (!session) {
    return digest;
  }
  Sha256 key = sha256(*session);
  std::copy(digest.begin(), digest.end() - sessionBytes, key.begin() + sessionBytes);
  return key;
}

KeyRange keysOf(std::string_view session) {
  KeyRange keys{sha256(session), sha256(session)};
  std::fill(keys.first.begin() + sessionBytes, keys.first.end(), std::uint8_t{0});
  std::fill(keys.last.begin() + sessionBytes, keys.last.end(), std::uint8_t{0xff});
  return keys;
}

}  // namespace qel::collector
