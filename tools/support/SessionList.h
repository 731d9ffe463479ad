#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/support/Recordings.h"

namespace qel::support {

/// One run of the host program, as a database has recorded it.
struct Session {
  /// `Unknown`: the program still runs, or its end was not recorded.
  enum class End { Unknown, Stopped, Crashed };

  std::string id;
  std::string first;  ///< time of the earliest record
  std::string last;   ///< time of the latest record
  std::int64_t events = 0;
  std::int64_t environments = 0;
  std::int64_t crashes = 0;
  End end = End::Unknown;
  ReadOnlyDatabase* database = nullptr;  ///< the one that its rows are read from

  std::int64_t lengthInMs() const;
};

const char* nameOf(Session::End end);

/// Calls `take` with ID and text of each record of the session in the table. `take` returns false
/// if the text is not what a client stores.
void forEachRecord(const Session& session, const char* table,
                   const ReadOnlyDatabase::RowReader& take);

/// All sessions, in the order of their first records. A session is read from the database that
/// holds more of its records, or from the support database if both hold the same number. The
/// sending database holds only what has not been sent, the support database only what may be
/// copied, and either may be damaged.
std::vector<Session> listSessions(Recordings& recordings);

/// The session with this ID (a GUID in any form), or the last session of the list for "last".
/// Throws `tools::InputError` if there is none.
Session findSession(Recordings& recordings, const std::string& idOrLast);

}  // namespace qel::support
