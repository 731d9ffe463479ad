#include "tools/support/SessionList.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "host/QelId/Guid.h"
#include "host/QelUtilities/PathText.h"
#include "tools/common/InputError.h"
#include "tools/common/RowReader.h"
#include "tools/support/Moment.h"

namespace qel::support {
namespace {

using log::analytics::format::sessionMark;
using SessionsById = std::unordered_map<std::string, Session>;

struct Record {
  std::string session, time, category, subcategory;
};

/// Reads a row; `std::nullopt` if its session ID is missing or not in the form that clients search
/// for.
std::optional<Record> recordOf(std::string_view text) {
  auto [verdict, columns] = tools::readRow(text);
  auto& [session, installation, time, category, subcategory, event] = columns;
  if (verdict != tools::RowVerdict::Sound || !session ||
      text.find(sessionMark(*session)) == std::string_view::npos) {
    return std::nullopt;
  }
  return Record{*session, time.value_or(""), category.value_or(""), subcategory.value_or("")};
}

void addEvent(Session& session, const Record& record) {
  ++session.events;
  if (record.category != "Application") {
    return;
  }
  if (record.subcategory == "Crashed") {
    ++session.crashes;
    session.end = Session::End::Crashed;
  } else if (record.subcategory == "Stopped" && session.crashes == 0) {
    session.end = Session::End::Stopped;
  }
}

SessionsById sessionsIn(ReadOnlyDatabase& database) {
  SessionsById sessions;
  const auto read = [&](const char* table, const auto& add) {
    database.forEachRow(table, [&](std::int64_t /*id*/, std::string_view text) {
      const auto record = recordOf(text);
      if (!record) {
        return false;
      }
      Session& session = sessions[record->session];
      widen(session.first, session.last, record->time);
      add(session, *record);
      return true;
    });
  };
  read(environmentsTable, [](Session& session, const Record&) { ++session.environments; });
  read(itemsTable, addEvent);
  for (auto& [id, session] : sessions) {
    session.id = id;
    session.database = &database;
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

void forEachRecord(const Session& session, const char* table,
                   const ReadOnlyDatabase::RowReader& take) {
  const auto mark = sessionMark(session.id);
  session.database->forEachRow(table, [&](std::int64_t id, std::string_view text) {
    if (text.find(mark) == std::string_view::npos) {
      return true;
    }
    const auto record = recordOf(text);
    return record && (record->session != session.id || take(id, text));
  });
}

std::vector<Session> listSessions(Recordings& recordings) {
  SessionsById all;
  for (auto* const database : recordings.databases()) {
    for (auto& [id, session] : sessionsIn(*database)) {
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
    const auto place = utilities::utf8FromPath(recordings.directory);
    throw tools::InputError(last ? "there are no sessions in " + place
                                 : "there is no session " + *id + " in " + place +
                                       " (the command sessions lists those there are)");
  }
  return *found;
}

}  // namespace qel::support
