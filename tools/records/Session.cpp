#include "tools/records/Session.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "host/QelId/Guid.h"
#include "host/QelUtilities/PathText.h"
#include "tools/common/InputError.h"
#include "tools/records/Moment.h"

namespace qel::records {
namespace {

using SessionsById = std::unordered_map<std::string, Session>;

void addEvent(Session& session, const Row& row) {
  session.events += row.count;
  if (row.category != "Application") {
    return;
  }
  if (row.subcategory == "Crashed") {
    session.crashes += row.count;
    session.end = Session::End::Crashed;
  } else if (row.subcategory == "Stopped" && session.crashes == 0) {
    session.end = Session::End::Stopped;
  }
}

SessionsById sessionsIn(RecordFile& file) {
  SessionsById sessions;
  const auto read = [&](Table table, const auto& add) {
    file.forEachRow(table, [&](const Row& row) {
      if (row.session.empty()) {
        return false;
      }
      Session& session = sessions[std::string(row.session)];
      widen(session.first, session.last, row.time);
      add(session, row);
      return true;
    });
  };
  read(Table::Environments,
       [](Session& session, const Row& row) { session.environments += row.count; });
  read(Table::Events, addEvent);
  for (auto& [id, session] : sessions) {
    session.id = id;
    session.source = &file;
  }
  return sessions;
}

/// The ID in the form that clients write; `std::nullopt` if it is not a GUID.
std::optional<std::string> normalized(const std::string& id) {
  try {
    return qel::Guid::parse(id).toString(false);
  } catch (const qel::exception&) {
    return std::nullopt;
  }
}

std::int64_t records(const Session& session) { return session.events + session.environments; }

}  // namespace

std::int64_t Session::lengthInMs() const {
  const auto from = millisecondsOf(first);
  const auto to = millisecondsOf(last);
  return from && to ? *to - *from : 0;
}

const char* nameOf(Session::End end) {
  switch (end) {
    case Session::End::Stopped:
      return "stopped";
    case Session::End::Crashed:
      return "crashed";
    case Session::End::Unknown:
      break;
  }
  return "unknown";
}

std::vector<Session> listSessions(Recordings& recordings) {
  SessionsById all;
  for (const auto& file : recordings.files) {
    for (auto& [id, session] : sessionsIn(*file)) {
      Session& known = all[id];
      if (records(session) > records(known)) {
        known = std::move(session);
      }
    }
  }
  std::vector<Session> sessions;
  sessions.reserve(all.size());
  for (auto& [id, session] : all) {
    sessions.push_back(std::move(session));
  }
  std::sort(sessions.begin(), sessions.end(), [](const Session& left, const Session& right) {
    return std::tie(left.first, left.id) < std::tie(right.first, right.id);
  });
  return sessions;
}

Session findSession(Recordings& recordings, const std::string& idOrLast) {
  const bool last = idOrLast == "last";
  const auto id = normalized(idOrLast);
  if (!last && !id) {
    throw tools::InputError("--session: " + idOrLast + R"( is neither a session's ID nor "last")");
  }
  const auto sessions = listSessions(recordings);
  const auto found = std::find_if(sessions.rbegin(), sessions.rend(), [&](const Session& session) {
    return last || normalized(session.id) == id;
  });
  if (found == sessions.rend()) {
    const auto place = utilities::utf8FromPath(recordings.place);
    throw tools::InputError(last ? "there are no sessions in " + place
                                 : "there is no session " + *id + " in " + place +
                                       " (the command sessions lists those there are)");
  }
  return *found;
}

}  // namespace qel::records
