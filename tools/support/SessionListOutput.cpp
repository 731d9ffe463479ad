#include "tools/support/SessionListOutput.h"

#include <ostream>

#include <nlohmann/json.hpp>

#include "host/QelUtilities/PathText.h"
#include "tools/support/DisplayText.h"
#include "tools/support/DisplayTime.h"
#include "tools/support/TextTable.h"

namespace qel::support {
namespace {

using records::Session;

Style styleOf(Session::End end) {
  switch (end) {
    case Session::End::Stopped:
      return Style::Good;
    case Session::End::Crashed:
      return Style::Bad;
    case Session::End::Unknown:
      break;
  }
  return Style::Faint;
}

std::string fileOf(const Session& session) {
  return utilities::utf8FromPath(session.source->path().filename());
}

}  // namespace

void print(const std::vector<Session>& sessions, std::ostream& output, const Terminal& terminal) {
  if (sessions.empty()) {
    output << "no sessions\n";
    return;
  }
  using Kind = TextTable::Column::Kind;
  TextTable table({{"Session"},
                   {"First (UTC)"},
                   {"Last (UTC)"},
                   {"Length", Kind::Right},
                   {"Events", Kind::Right},
                   {"End"},
                   {"From", Kind::Wrapped}});
  for (const auto& session : sessions) {
    table.add({session.id,
               readableTime(session.first),
               readableTime(session.last),
               readableLength(session.lengthInMs()),
               grouped(session.events),
               {nameOf(session.end), styleOf(session.end)},
               fileOf(session)});
  }
  table.print(output, terminal);
}

void printJson(const std::vector<Session>& sessions, std::ostream& output) {
  using Json = nlohmann::ordered_json;
  Json all = Json::array();
  for (const auto& session : sessions) {
    all.push_back({{"session", session.id},
                   {"first", session.first},
                   {"last", session.last},
                   {"lengthInSeconds", static_cast<double>(session.lengthInMs()) / 1000},
                   {"events", session.events},
                   {"environments", session.environments},
                   {"crashes", session.crashes},
                   {"end", nameOf(session.end)},
                   {"file", fileOf(session)}});
  }
  output << all.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace qel::support
