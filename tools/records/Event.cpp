#include "tools/records/Event.h"

#include <algorithm>
#include <iterator>

#include <nlohmann/json.hpp>

#include "tools/common/RowReader.h"

namespace qel::records {
namespace {

using Json = nlohmann::ordered_json;

/// A string without its quotes, or any other value as JSON.
std::string plainText(const Json& value) {
  return value.is_string() ? value.get<std::string>() : value.dump();
}

/// Adds the facts of an environment record that distinguish one machine from another.
void addEnvironment(Event& event, const Json& record) {
  static const std::vector<std::pair<std::string, std::string>> facts{
      {"Program", "/CurrentActiveApplication/Name"},
      {"Version", "/CurrentActiveApplication/Version"},
      {"Operating system", "/OS/Name"},
      {"Build", "/OS/BuildNumber"},
      {"Language", "/OS/Language"},
      {"Screen", "/OS/ScreenResolution"},
      {"Processor", "/Hardware/CPU"},
      {"Graphic card", "/Hardware/GraphicCard"}};
  event.category = environmentCategory;
  for (const auto& [name, place] : facts) {
    const Json::json_pointer pointer(place);
    auto value = record.contains(pointer) ? plainText(record[pointer]) : "";
    if (!value.empty()) {
      event.details.emplace_back(name, std::move(value));
    }
  }
}

}  // namespace

std::optional<Event> parseEvent(Table table, std::string_view text) {
  const auto [verdict, columns] = tools::readRow(text);
  if (verdict != tools::RowVerdict::Sound) {
    return std::nullopt;
  }
  const auto& [session, installation, time, category, subcategory, name] = columns;
  Event event{installation.value_or(""), time.value_or(""), category.value_or(""),
              subcategory.value_or(""),  name.value_or(""), {},
              std::string(text)};
  const auto record = Json::parse(text);
  if (table == Table::Environments) {
    addEnvironment(event, record);
  }
  const auto details = record.find("Details");
  if (details != record.end() && details->is_object()) {
    for (const auto& [key, value] : details->items()) {
      event.details.emplace_back(key, plainText(value));
    }
  }
  return event;
}

std::vector<Event> merged(std::vector<Event> environments, std::vector<Event> events) {
  std::stable_sort(environments.begin(), environments.end(),
                   [](const Event& left, const Event& right) { return left.time < right.time; });
  std::vector<Event> all;
  all.reserve(environments.size() + events.size());
  auto environment = environments.begin();
  for (auto& event : events) {
    for (; environment != environments.end() && environment->time < event.time; ++environment) {
      all.push_back(std::move(*environment));
    }
    all.push_back(std::move(event));
  }
  std::move(environment, environments.end(), std::back_inserter(all));
  return all;
}

std::string_view Event::detail(std::string_view key) const {
  const auto found = std::find_if(details.begin(), details.end(),
                                  [&](const auto& detail) { return detail.first == key; });
  return found == details.end() ? std::string_view() : found->second;
}

std::string titleOf(const Event& event) {
  const bool both = !event.subcategory.empty() && !event.event.empty();
  return event.subcategory + (both ? ": " : "") + event.event;
}

std::string detailsOf(const Event& event) {
  std::string text;
  for (const auto& [key, value] : event.details) {
    text.append(text.empty() ? "" : "; ").append(key).append(" = ").append(value);
  }
  return text;
}

std::vector<Event> EventReader::rowsOf(RecordFile& file, Table table) {
  std::vector<Event> events;
  auto& position = positions_[table];
  const auto known = position;
  bool isKnownThere = known == 0;
  const auto add = [&](const Row& row) {
    if (known != 0 && row.id == known) {
      isKnownThere = true;
      return true;
    }
    position = std::max(position, row.id);
    if (row.session != session_) {
      return true;
    }
    auto event = parseEvent(table, row.text);
    if (!event) {
      return false;
    }
    event->count = row.count;
    events.push_back(std::move(*event));
    return true;
  };
  if (isFirst_) {
    file.forEachRecord(session_, table, add);
    return events;
  }
  file.forEachRowAfter(known == 0 ? 0 : known - 1, table, add);
  if (!isKnownThere) {  // It was sent or purged with all earlier rows, and IDs may start anew.
    events.clear();
    position = 0;
    file.forEachRow(table, add);
  }
  return events;
}

std::vector<Event> EventReader::next(RecordFile& file) {
  auto environments = rowsOf(file, Table::Environments);
  auto events = merged(std::move(environments), rowsOf(file, Table::Events));
  isFirst_ = false;
  return events;
}

std::vector<Event> eventsOf(const Session& session) {
  return EventReader(session.id).next(*session.source);
}

}  // namespace qel::records
