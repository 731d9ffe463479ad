#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "tools/support/Terminal.h"
#include "tools/support/TextTable.h"
#include "tools/support/Timeline.h"

namespace qel::support {

/// Prints records as tables, one for each day.
class TimelinePrinter {
 public:
  /// The output must outlive this object.
  TimelinePrinter(std::ostream& output, Terminal terminal) : output_(output), terminal_(terminal) {}

  void print(const std::vector<records::Event>& events);

 private:
  void begin(const std::string& day);

  std::ostream& output_;
  const Terminal terminal_;
  std::string day_;
  std::optional<TextTable> table_;
};

/// Prints one line about the session.
void printHeading(const records::Session& session, std::ostream& output, const Terminal& terminal);

void print(const Timeline& timeline, std::ostream& output, const Terminal& terminal);
/// Prints one record per line.
void printJsonLines(const std::vector<records::Event>& events, std::ostream& output);
void printJson(const Timeline& timeline, std::ostream& output);

}  // namespace qel::support
