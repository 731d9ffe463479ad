#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Application/Log/Analytics/Database/DatabaseFormat.h"
#include "tools/records/RecordFile.h"

namespace qel::records {

inline constexpr const char* sendingDatabaseName = log::analytics::format::sendingDatabase;
inline constexpr const char* supportDatabaseName = log::analytics::format::supportDatabase;

/// The recordings in one place: a directory with one or both of a client's databases, or a single
/// file.
struct Recordings {
  /// Throws `tools::InputError` if the place does not exist or holds no recordings, and
  /// `qel::exception` if nothing can be read.
  explicit Recordings(std::filesystem::path where, const ReadOnlyDatabase::Progress& progress = {});

  std::vector<std::string> remarks() const;

  const std::filesystem::path place;
  std::vector<std::unique_ptr<RecordFile>> files;  ///< the support database before the sending one
  RecordFile* sending = nullptr;  ///< the file whose rows wait to be sent; null if there is none
};

}  // namespace qel::records
