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

/// The databases that a client has written in one directory. Either of the two may be missing.
struct Recordings {
  /// Throws `tools::InputError` if the directory does not exist or has no database, and
  /// `qel::exception` if no database can be read.
  explicit Recordings(std::filesystem::path place, const ReadOnlyDatabase::Progress& progress = {});

  /// The databases that exist, the support database first.
  std::vector<ReadOnlyDatabase*> databases();
  std::vector<std::string> remarks() const;

  std::filesystem::path directory;
  std::optional<ReadOnlyDatabase> support;
  std::optional<ReadOnlyDatabase> sending;
};

}  // namespace qel::support
