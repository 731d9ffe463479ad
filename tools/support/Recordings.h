#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tools/support/ReadOnlyDatabase.h"

namespace qel::support {

inline constexpr const char* itemsTable = "Items";
inline constexpr const char* environmentsTable = "Environments";
inline constexpr const char* sendingDatabaseName = "ItemDatabase.db";
inline constexpr const char* supportDatabaseName = "SupportDatabase.db";

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
