#include "tools/support/SessionListOutput.h"

#include <algorithm>
#include <map>
#include <ostream>

#include <nlohmann/json.hpp>

#include "host/QelUtilities/PathText.h"
#include "tools/report/DisplayText.h"
#include "tools/support/TextTable.h"

namespace qel::support {
namespace {

using records::Session;
using Kind = TextTable::Column::Kind;
using Sessions = std::vector<Session>;

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

TextTable wideTable(const Sessions& sessions, report::Zone zone) {
  TextTable table({{"Session"},
                   {report::timeTitle("First", zone)},
                   {report::timeTitle("Last", zone)},
                   {"Length", Kind::Right},
                   {"Events", Kind::Right},
                   {"End"},
                   {"From", Kind::Wrapped}});
  for (const auto& session : sessions) {
    table.add({session.id,
               report::readableTime(session.first, zone),
               report::readableTime(session.last, zone),
               report::readableLength(session.lengthInMs()),
               report::grouped(session.events),
               {endOf(session), styleOf(session.end)},
               fileOf(session)});
  }
  return table;
}

std::size_t commonLength(const std::string& left, const std::string& right) {
  return static_cast<std::size_t>(
      std::mismatch(left.begin(), left.end(), right.begin(), right.end()).first - left.begin());
}

/// The beginnings of the IDs, which are long enough to tell the sessions apart.
std::map<std::string, std::string> shortIds(const Sessions& sessions) {
  std::map<std::string, std::string> shortened;
  for (const auto& session : sessions) {
    shortened.emplace(session.id, "");
  }
  std::size_t length = 8;
  for (auto next = shortened.begin(); next != shortened.end();) {
    const auto& id = next->first;
    if (++next != shortened.end()) {
      length = std::max(length, commonLength(id, next->first) + 1);
    }
  }
  for (auto& [id, beginning] : shortened) {
    beginning = id.substr(0, length);
  }
  return shortened;
}

/// A table with shortened IDs and without the times of the last records. Names the file only if
/// there are several.
TextTable narrowTable(const Sessions& sessions, report::Zone zone, bool hasAmounts) {
  const auto file = fileOf(sessions.front());
  const bool hasFiles = std::any_of(sessions.begin(), sessions.end(),
                                    [&](const auto& session) { return fileOf(session) != file; });
  std::vector<TextTable::Column> columns{{"Session"}, {report::timeTitle("First", zone)}};
  if (hasAmounts) {
    columns.push_back({"Length", Kind::Right});
    columns.push_back({"Events", Kind::Right});
  }
  columns.push_back({"End"});
  if (hasFiles && hasAmounts) {
    columns.push_back({"From", Kind::Wrapped});
  }
  TextTable table(columns);
  const auto ids = shortIds(sessions);
  for (const auto& session : sessions) {
    std::vector<TextTable::Cell> row{ids.at(session.id), report::readableTime(session.first, zone)};
    if (hasAmounts) {
      row.emplace_back(report::readableLength(session.lengthInMs()));
      row.emplace_back(report::grouped(session.events));
    }
    row.emplace_back(endOf(session), styleOf(session.end));
    if (hasFiles && hasAmounts) {
      row.emplace_back(fileOf(session));
    }
    table.add(row);
  }
  return table;
}

}  // namespace

void print(const Sessions& sessions, std::ostream& output, const Terminal& terminal) {
  if (sessions.empty()) {
    output << "no sessions\n";
    return;
  }
  auto wide = wideTable(sessions, terminal.zone);
  if (!wide.fits(terminal)) {
    for (const bool hasAmounts : {true, false}) {
      auto narrow = narrowTable(sessions, terminal.zone, hasAmounts);
      if (narrow.fits(terminal)) {
        narrow.print(output, terminal);
        return;
      }
    }
  }
  wide.print(output, terminal);
}

void printJson(const Sessions& sessions, std::ostream& output) {
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
                   {"wentOn", session.wentOn},
                   {"file", fileOf(session)}});
  }
  output << all.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace qel::support
