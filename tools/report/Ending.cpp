#include "tools/report/Ending.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>

#include "host/QelUtilities/PathText.h"
#include "tools/report/CrashCode.h"
#include "tools/report/DisplayText.h"
#include "tools/report/DisplayTime.h"

namespace qel::report {
namespace {

using kainjow::mustache::data;
using kainjow::mustache::object;
using records::Event;
using records::Session;
using Events = std::vector<Event>;

constexpr const char* notRecorded = "not recorded";

/// The last event of the category, at the end or before it. Null if there is none.
const Event* lastOf(const Events& events, const Ending& ending, std::string_view category) {
  for (auto place = std::min(ending.place + 1, events.size()); place > 0; --place) {
    if (events[place - 1].category == category) {
      return &events[place - 1];
    }
  }
  return nullptr;
}

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return text;
}

/// "Draw duct (duct.draw), started 2026-11-21 09:30:05".
std::string textOf(const Event& event) {
  const std::string id(event.detail("ID"));
  return event.event + (id.empty() ? "" : " (" + id + ")") + ", " + lowerCase(event.subcategory) +
         ' ' + readableTime(event.time);
}

/// The last commands that had started and not ended; empty if there are none.
std::string unfinishedCommands(const Events& events, const Ending& ending) {
  std::map<std::string_view, std::size_t> running;  // positions by ID
  for (std::size_t place = 0; place < std::min(ending.place, events.size()); ++place) {
    if (events[place].category == "Command") {
      const auto id = events[place].detail("ID");
      running.erase(id);
      if (events[place].subcategory == "Started") {
        running[id] = place;
      }
    }
  }
  std::vector<std::size_t> places;
  places.reserve(running.size());
  for (const auto& [id, place] : running) {
    places.push_back(place);
  }
  std::sort(places.rbegin(), places.rend());
  constexpr std::size_t most = 3;
  std::string text;
  for (std::size_t i = 0; i < std::min(places.size(), most); ++i) {
    text += (i == 0 ? "" : "; ") + textOf(events[places[i]]);
  }
  return text + (places.size() > most
                     ? "; " + grouped(static_cast<std::int64_t>(places.size() - most)) + " more"
                     : "");
}

/// The program with its version, from the environment record before the end.
std::string programOf(const Events& events, const Ending& ending) {
  const auto* const environment = lastOf(events, ending, records::environmentCategory);
  if (environment == nullptr || environment->detail("Program").empty()) {
    return notRecorded;
  }
  return std::string(environment->detail("Program")) + ' ' +
         std::string(environment->detail("Version"));
}

const char* headingOf(Session::End kind) {
  switch (kind) {
    case Session::End::Crashed:
      return "The program crashed";
    case Session::End::Stopped:
      return "The program stopped normally";
    case Session::End::Unknown:
      break;
  }
  return "How the program ended is unknown";
}

/// When the session ended; empty if no record has a time.
std::string whenOf(const Session& session, const Events& events, const Ending& ending) {
  const bool isKnown = ending.place < events.size();
  const auto time = readableTime(isKnown ? events[ending.place].time : session.last);
  return time.empty() ? "" : (isKnown ? "" : "Last record: ") + time + " UTC";
}

/// How a session went on after its crash; empty if it did not.
std::string afterwardsOf(const Events& events, const Ending& ending) {
  const Event* started = nullptr;
  const Event* stopped = nullptr;
  for (auto place = ending.place; place < events.size(); ++place) {
    const auto& event = events[place];
    if (event.category != "Application") {
      continue;
    }
    if (event.subcategory == "Started") {
      started = started == nullptr ? &event : started;
      stopped = nullptr;
    } else if (started != nullptr && event.subcategory == "Stopped") {
      stopped = &event;
    }
  }
  if (ending.kind != Session::End::Crashed || started == nullptr) {
    return "";
  }
  return "Started again " + readableTime(started->time) +
         (stopped == nullptr ? " UTC, how it ended then is unknown"
                             : ", stopped normally " + readableTime(stopped->time) + " UTC");
}

/// "1 h 05 min, 2026-11-21 09:30:05 to 2026-11-21 10:35:07 UTC".
std::string lengthOf(const Session& session) {
  if (session.first.empty()) {
    return notRecorded;
  }
  const auto first = readableTime(session.first);
  const auto last = readableTime(session.last);
  return readableLength(session.lengthInMs()) + ", " + first +
         (first == last ? "" : " to " + last) + " UTC";
}

/// A section of the template that is left out if there is no text.
data optional(const std::string& text) { return text.empty() ? data(false) : data(text); }

}  // namespace

bool isCrash(const Event& event) {
  return event.category == "Application" && event.subcategory == "Crashed";
}

Ending endingOf(const Events& events) {
  Ending ending{Session::End::Unknown, events.size()};
  for (std::size_t place = 0; place < events.size(); ++place) {
    const auto& event = events[place];
    if (isCrash(event)) {
      ending = {Session::End::Crashed, place};
    } else if (ending.kind != Session::End::Crashed && event.category == "Application" &&
               event.subcategory == "Stopped") {
      ending = {Session::End::Stopped, place};
    }
  }
  return ending;
}

data verdictOf(const Session& session, const Events& events, const Ending& ending) {
  data facts(data::type::list);
  const auto add = [&](const char* name, const std::string& value) {
    facts << object{{"name", name}, {"value", value}};
  };
  const auto textOrNot = [](const Event* event) { return event ? textOf(*event) : notRecorded; };
  const bool crashed = ending.kind == Session::End::Crashed;
  if (crashed) {
    const auto& crash = events[ending.place];
    const auto code = crashCodeText(crash.detail("Exception Code"));
    add("Crash text", crash.event.empty() ? "no text" : crash.event);
    add("Code", code.empty() ? notRecorded : code);
    if (const auto crashes = countIf(events, isCrash); crashes > 1) {
      add("Crashes", grouped(crashes) + "; this page describes the last one");
    }
  }
  add(crashed ? "Last command before the crash" : "Last command",
      textOrNot(lastOf(events, ending, "Command")));
  if (const auto unfinished = unfinishedCommands(events, ending); !unfinished.empty()) {
    add("Commands not ended", unfinished);
  }
  add("Last project", textOrNot(lastOf(events, ending, "Project")));
  add("Program", programOf(events, ending));
  add("Installation", events.empty() || events.front().installation.empty()
                          ? notRecorded
                          : events.front().installation);
  add("Length", lengthOf(session));
  add("Events", grouped(session.events));
  if (session.source != nullptr) {
    add("Read from", utilities::utf8FromPath(session.source->path().filename()));
  }
  data verdict(object{{"heading", headingOf(ending.kind)},
                      {"when", optional(whenOf(session, events, ending))},
                      {"afterwards", optional(afterwardsOf(events, ending))},
                      {"crashed", crashed},
                      {"unknown", ending.kind == Session::End::Unknown}});
  verdict["facts"] = std::move(facts);
  return verdict;
}

}  // namespace qel::report
