#pragma once

#include <string>
#include <vector>

#include "tools/records/Event.h"
#include "tools/report/EventText.h"

namespace qel::support {

/// Selects records of a session.
struct TimelineFilter {
  std::string category;  ///< case-insensitive; empty: all categories
  std::string since;     ///< a record's time; empty: no limit
  std::string until;     ///< a record's time; empty: no limit
  report::TextSearch search;

  bool admits(const records::Event& event) const;
  std::vector<records::Event> select(std::vector<records::Event> events) const;
};

/// A session and the records that a filter has selected.
struct Timeline {
  records::Session session;
  std::vector<records::Event> events;
};

}  // namespace qel::support
