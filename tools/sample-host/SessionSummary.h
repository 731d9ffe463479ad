#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "tools/sample-host/StoredRows.h"

namespace qel::samplehost {

/// The result of one session.
struct SessionSummary {
  std::string sessionId;
  std::int64_t broadcast = 0;         ///< number of notifications
  std::int64_t handedForSending = 0;  ///< rows passed to the sending database
  std::int64_t handedForSupport = 0;
  std::int64_t sent = 0;  ///< rows that the server accepted, also from earlier sessions
  StoredRows before;
  StoredRows after;
  bool interrupted = false;   ///< the session ended before its script
  bool storageEnded = false;  ///< storing failed before the session ended

  std::int64_t storedForSending() const { return sent + after.forSending - before.forSending; }
  std::int64_t storedForSupport() const { return after.forSupport - before.forSupport; }
};

/// The storage failures, one sentence each. Empty if all rows were stored.
std::vector<std::string> storageFailures(const SessionSummary& summary);

void print(const SessionSummary& summary, std::ostream& output);

}  // namespace qel::samplehost
