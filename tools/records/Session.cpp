#include "tools/records/Session.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "host/QelUtilities/PathText.h"
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
    session.wentOn = false;
  } else if (row.subcategory == "Started" && session.crashes > 0) {
    session.wentOn = true;
  } else if (row.subcategory == "Stopped" && session.crashes == 0) {
    session.end = Session::End::Stopped;
  }
}

bool addRow(SessionsById& sessions, Table table, const Row& row) {
  if (row.session.empty()) {
    return false;
  }
  addTo(sessions[std::string(row.session)], table, row);
  return true;
}

/// The sessions of the choice and possibly others, or all sessions if there is no choice.
SessionsById sessionsIn(RecordFile& file, const SessionChoice* choice) {
  SessionsById sessions;
  const auto ids = choice == nullptr ? std::nullopt : file.find(*choice);
  for (const auto table : {Table::Environments, Table::Events}) {
    const auto add = [&](const Row& row) { return addRow(sessions, table, row); };
    if (!ids) {
      file.forEachRow(table, add);
      continue;
    }
    for (const auto& id : *ids) {
      file.forEachRecord(id, table, add);
    }
  }
  for (auto& [id, session] : sessions) {
    session.id = id;
    session.source = &file;
  }
  return sessions;
}

std::int64_t records(const Session& session) { return session.events + session.environments; }

std::vector<Session> sessionsIn(Recordings& recordings, const SessionChoice* choice) {
  SessionsById all;
  for (const auto& file : recordings.files) {
    for (auto& [id, session] : sessionsIn(*file, choice)) {
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

}  // namespace

std::int64_t Session::lengthInMs() const {
  const auto from = millisecondsOf(first);
  const auto to = millisecondsOf(last);
  return from && to ? *to - *from : 0;
}

void addTo(Session& session, Table table, const Row& row) {
  widen(session.first, session.last, row.time);
  if (table == Table::Events) {
    addEvent(session, row);
  } else {
    session.environments += row.count;
  }
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

std::string endOf(const Session& session) {
  return std::string(nameOf(session.end)) + (session.wentOn ? ", went on" : "");
}

std::vector<Session> listSessions(Recordings& recordings) {
  return sessionsIn(recordings, nullptr);
}

Session findSession(Recordings& recordings, const SessionChoice& choice) {
  auto sessions = sessionsIn(recordings, &choice);
  if (!choice.isLast()) {
    std::erase_if(sessions, [&](const Session& session) { return !choice.begins(session.id); });
    const auto exact = std::find_if(sessions.begin(), sessions.end(), [&](const Session& session) {
      return choice.isExactly(session.id);
    });
    if (exact != sessions.end()) {
      return *exact;
    }
    if (sessions.size() > 1) {
      throw AmbiguousSession(choice.text(), std::move(sessions));
    }
  }
  if (sessions.empty()) {
    const auto place = utilities::utf8FromPath(recordings.place);
    throw tools::InputError(choice.isLast()
                                ? "there are no sessions in " + place
                                : "there is no session " + choice.text() + " in " + place +
                                      " (the command sessions lists those there are)");
  }
  return sessions.back();
}

}  // namespace qel::records
