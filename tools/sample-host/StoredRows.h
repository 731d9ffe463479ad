#pragma once

#include <cstdint>
#include <filesystem>

#include "host/QelId/Guid.h"

namespace qel::samplehost {

/// The numbers of rows in a directory's databases, items and environments together.
struct StoredRows {
  std::int64_t forSending = 0;   ///< of all sessions
  std::int64_t forSupport = 0;   ///< of one session
  std::int64_t fullMarkers = 0;  ///< rows for sending that report a full file
};

/// Counts the rows; call it while no client is open. Creates missing database files. Throws
/// `qel::exception` if a file cannot be opened, or another process uses it.
StoredRows countStoredRows(const std::filesystem::path& directory, const qel::Guid& session);

}  // namespace qel::samplehost
