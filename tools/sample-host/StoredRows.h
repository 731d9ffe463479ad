#pragma once

#include <cstdint>
#include <filesystem>

#include "host/QelId/Guid.h"

namespace qel::samplehost {

/// The numbers of rows (items and environments) in the databases of a directory.
struct StoredRows {
  std::int64_t forSending = 0;   ///< rows of all sessions
  std::int64_t forSupport = 0;   ///< rows of one session
  std::int64_t fullMarkers = 0;  ///< rows for sending that report a full file
};

/// Counts the rows. Must be called while no client is open. Creates missing database files. Throws
/// `qel::exception` if a file cannot be opened or another process uses it.
StoredRows countStoredRows(const std::filesystem::path& directory, const qel::Guid& session);

}  // namespace qel::samplehost
