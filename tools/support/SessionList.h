#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/support/Recordings.h"

namespace qel::support {

/// One run of the host program, as a database tells of it.
struct Session {
  /// `Unknown`: it still runs, or nothing was recorded of its end.
  enum class End { Unknown, Stopped, Crashed };

  std::string id;
  std::string first;  ///< time of its earliest record
  std::string last;   ///< and of its latest
  std::int64_t events = 0;
  std::int64_t environments = 0;
  std::int64_t crashes = 0;
  End end = End::Unknown;
  ReadOnlyDatabase* database = nullptr;  ///< where its rows are read from

  std::int64_t lengthInMs() const;
};

const char* nameOf(Session::End end);

/// Calls `take` with ID and text of each record of the session that the table has. It returns
/// false where the text is not what a client stores, as for `ReadOnlyDatabase::RowReader`.
void forEachRecord(const Session& session, const char* table,
                   const ReadOnlyDatabase::RowReader& take);

/// All sessions, by the time of their first records. The database that holds more of a session
/// tells of it, the support database where both hold the same: the sending database has only what
/// has not been sent, the other one only what may be copied, and either may be damaged.
std::vector<Session> listSessions(Recordings& recordings);

/// The session of this ID (a GUID in any form), or the last one of the list for "last". Throws
/// `tools::InputError` when there is none.
Session findSession(Recordings& recordings, const std::string& idOrLast);

}  // namespace qel::support
