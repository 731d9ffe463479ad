#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/records/Session.h"

namespace qel::records {

/// The category under which environment records are shown.
inline constexpr std::string_view environmentCategory = "Environment";

/// One record of a session.
struct Event {
  std::string installation;
  std::string time;
  std::string category;
  std::string subcategory;
  std::string event;
  std::vector<std::pair<std::string, std::string>> details;
  std::string text;        ///< the stored JSON object
  std::int64_t count = 1;  ///< how often the client recorded the same text

  /// The value of a detail; empty if there is none.
  std::string_view detail(std::string_view key) const;
};

/// The title "Subcategory: Event", or only one of these names if the other is empty.
std::string titleOf(const Event& event);
/// The details as "key = value; key = value".
std::string detailsOf(const Event& event);

/// Parses a stored text; returns `std::nullopt` if it is not a record.
std::optional<Event> parseEvent(Table table, std::string_view text);
/// The events with the environment records inserted by time.
std::vector<Event> merged(std::vector<Event> environments, std::vector<Event> events);

/// How many records the predicate selects; equal ones count as often as they were recorded.
template <typename Predicate>
std::int64_t countIf(const std::vector<Event>& events, const Predicate& isCounted) {
  std::int64_t count = 0;
  for (const auto& event : events) {
    count += isCounted(event) ? event.count : 0;
  }
  return count;
}

/// Reads a session's records, and later those that were added.
class EventReader {
 public:
  explicit EventReader(std::string session) : session_(std::move(session)) {}

  /// The session's records that no earlier call has returned, equal ones of a store once, in the
  /// order in which they were written. Environment records, which have a separate table, are
  /// inserted by time. Each call may use another object for the same file, also if it was emptied
  /// or replaced meanwhile.
  std::vector<Event> next(RecordFile& file);

 private:
  std::vector<Event> rowsOf(RecordFile& file, Table table);

  const std::string session_;
  bool isFirst_ = true;
  std::map<Table, std::int64_t> positions_;  ///< the IDs of the last rows that were read
};

/// All records of the session.
std::vector<Event> eventsOf(const Session& session);

}  // namespace qel::records
