#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Application/Log/Analytics/Database/DatabaseFormat.h"
#include "tools/support/ReadOnlyDatabase.h"

namespace qel::support {

using log::analytics::format::environmentsTable;
using log::analytics::format::itemsTable;
inline constexpr const char* sendingDatabaseName = log::analytics::format::sendingDatabase;
inline constexpr const char* supportDatabaseName = log::analytics::format::supportDatabase;

/// What a client has recorded in one directory: its databases, as far as they are there.
struct Recordings {
  /// Throws `tools::InputError` when there is no such directory, or no database in it, and
  /// `qel::exception` when none can be read.
  explicit Recordings(std::filesystem::path place, const ReadOnlyDatabase::Progress& progress = {});

  /// Those that are there, the support database first.
  std::vector<ReadOnlyDatabase*> databases();
  std::vector<std::string> remarks() const;

  std::filesystem::path directory;
  std::optional<ReadOnlyDatabase> support;
  std::optional<ReadOnlyDatabase> sending;
};

}  // namespace qel::support
