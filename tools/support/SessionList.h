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

/// What the texts of a session's rows have in common: the client's own way to tell them.
std::string sessionMark(const std::string& id);

/// All sessions, by the time of their first records. What the support database knows of a session
/// counts; the sending database tells of the others, as far as their rows have not been sent.
std::vector<Session> listSessions(Recordings& recordings);

/// The session of this ID (a GUID in any form), or the last one of the list for "last". Throws
/// `tools::InputError` when there is none.
Session findSession(Recordings& recordings, const std::string& idOrLast);

}  // namespace qel::support
