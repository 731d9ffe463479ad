#pragma once

#include <cstdint>
#include <filesystem>

#include "host/QelId/Guid.h"

namespace qel::samplehost {

/// What a directory's databases hold, items and environments together.
struct StoredRows {
  std::int64_t forSending = 0;   ///< of all sessions
  std::int64_t forSupport = 0;   ///< of the one session
  std::int64_t fullMarkers = 0;  ///< among those for sending: each tells that the file was full
};

/// Counts while no client is open. Creates database files that are not there yet. Throws
/// `qel::exception` when they cannot be opened, or are in use by another process.
StoredRows countStoredRows(const std::filesystem::path& directory, const qel::Guid& session);

}  // namespace qel::samplehost
