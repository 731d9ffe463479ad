#pragma once

#include <filesystem>
#include <memory>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/Mutex.h"
#include "tools/collector/PackageReader.h"

namespace qel::collector {

/// The store cannot be used at present. The message may be logged.
class StoreError : public qel::exception {
 public:
  using qel::exception::exception;
};

/// The received packages, in an SQLite file with three tables:
///
/// - `events`: id, received, count, session, installation, time, category, subcategory, event, text
/// - `environments`: id, received, count, session, installation, time, text
/// - `refused`: id, received, count, reason, text
///
/// `text` is the text as it was sent, byte for byte. Each text is stored once. `received` is the
/// time (UTC) when the text was first received. `count` is the maximum number of its occurrences in
/// one package, so a package that is sent again does not increase it. A column is NULL if the row
/// has no such member. Thread-safe.
class Store {
 public:
  /// Opens or creates the file. Throws `StoreError` if that fails.
  explicit Store(const std::filesystem::path& file);
  ~Store();

  /// Stores a package. When it returns, the whole package is on disk. If it throws `StoreError`, no
  /// part of the package is stored.
  void add(const Package& package);

 private:
  class Database;

  utilities::Mutex mutex_;
  const std::unique_ptr<Database> database_ QEL_PT_GUARDED_BY(mutex_);
};

}  // namespace qel::collector
