#pragma once

#include <optional>
#include <string_view>

#include "tools/collector/Sha256.h"

namespace qel::collector {

/// The key that identifies a text, from the text's digest. It begins with eight bytes of the
/// session's digest, so the keys of a session are neighbours. Without a session it is the digest.
Sha256 keyOf(std::optional<std::string_view> session, const Sha256& digest);

/// The keys that a session's texts can have.
struct KeyRange {
  Sha256 first;
  Sha256 last;
};
KeyRange keysOf(std::string_view session);

inline std::string_view bytesOf(const Sha256& key) {
  return {reinterpret_cast<const char*>(key.data()), key.size()};
}

}  // namespace qel::collector
