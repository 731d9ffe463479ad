#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "tools/sample-host/StoredRows.h"

namespace qel::samplehost {

/// What came of one session.
struct SessionSummary {
  std::string sessionId;
  std::int64_t broadcast = 0;         ///< notifications
  std::int64_t handedForSending = 0;  ///< rows that the sending database was given to store
  std::int64_t handedForSupport = 0;
  std::int64_t sent = 0;  ///< rows that the server has accepted, of earlier sessions too
  StoredRows before;
  StoredRows after;
  bool interrupted = false;   ///< ended before the script did
  bool storageEnded = false;  ///< the database pair gave up

  std::int64_t storedForSending() const { return sent + after.forSending - before.forSending; }
  std::int64_t storedForSupport() const { return after.forSupport - before.forSupport; }
};

/// What went wrong with storing, a sentence each; nothing when all that was handed in was stored.
std::vector<std::string> storageFailures(const SessionSummary& summary);

void print(const SessionSummary& summary, std::ostream& output);

}  // namespace qel::samplehost
