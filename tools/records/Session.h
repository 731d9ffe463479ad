#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tools/common/InputError.h"
#include "tools/records/Recordings.h"

namespace qel::records {

/// One run of the host program, as recorded in a database.
struct Session {
  /// `Unknown`: the program still runs, or its exit was not recorded.
  enum class End { Unknown, Stopped, Crashed };

  std::string id;
  std::string first;  ///< time of the earliest record
  std::string last;   ///< time of the latest record
  std::int64_t events = 0;
  std::int64_t environments = 0;
  std::int64_t crashes = 0;
  End end = End::Unknown;
  bool wentOn = false;           ///< the program started again in the session after its last crash
  RecordFile* source = nullptr;  ///< its records are read from this file, if from any

  std::int64_t lengthInMs() const;
};

/// Counts a record of the session. An environment record has no names.
void addTo(Session& session, Table table, const Row& row);

const char* nameOf(Session::End end);
/// The name of the session's end, followed by "went on" if it went on after a crash.
std::string endOf(const Session& session);

/// All sessions, ordered by the times of their first records. A session is read from the file
/// that has more of its records, or from the support database if both have the same number. The
/// sending database lacks records that have been sent. The support database lacks records for which
/// the user denied permission. Either may be damaged.
std::vector<Session> listSessions(Recordings& recordings);

/// The beginning of an ID fits several sessions.
class AmbiguousSession : public tools::InputError {
 public:
  AmbiguousSession(const std::string& beginning, std::vector<Session> sessions)
      : InputError("--session: " + std::to_string(sessions.size()) + " sessions begin with " +
                   beginning + ": give more characters"),
        sessions_(std::move(sessions)) {}

  const std::vector<Session>& sessions() const { return sessions_; }

 private:
  std::vector<Session> sessions_;
};

/// The session of the choice. Reads no more of a collector's store than it needs. Throws
/// `tools::InputError` if there is no such session, and `AmbiguousSession` if there are several.
Session findSession(Recordings& recordings, const SessionChoice& choice);

}  // namespace qel::records
