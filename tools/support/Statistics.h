#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/records/Recordings.h"

namespace qel::support {

/// The content of one database file.
struct FileStatistics {
  std::string name;
  std::uintmax_t bytes = 0;
  std::int64_t environments = 0;        ///< rows
  std::int64_t events = 0;              ///< rows
  std::optional<std::int64_t> refused;  ///< texts that a collector refused
  std::map<std::string, std::int64_t> eventsByCategory;
  std::string oldest;
  std::string newest;
};

/// The pending rows, which the server has not accepted yet, and the packages that they fill.
struct WaitingRows {
  std::int64_t rows = 0;
  std::int64_t bytes = 0;
  std::int64_t packages = 0;
  bool complete = true;  ///< if false, there may be more rows that cannot be read
};

/// The records in which the client reports one kind of failure of its own.
struct Marker {
  std::int64_t count = 0;
  std::string first;
  std::string last;
  std::string message;  ///< of the latest record
};

struct Statistics {
  std::vector<FileStatistics> files;
  std::optional<WaitingRows> waiting;        ///< empty if no sending database can be read
  std::map<std::string, Marker> markers;     ///< by "Area / Severity"
  std::vector<std::filesystem::path> aside;  ///< corrupt files that the client renamed
  std::vector<std::string> warnings;         ///< what could not be read
};

/// Explains whether a marker means that events were lost.
std::string_view meaningOf(const std::string& marker);

Statistics gatherStatistics(records::Recordings& recordings);

}  // namespace qel::support
