#pragma once

#include <filesystem>
#include <memory>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/Mutex.h"
#include "tools/collector/PackageReader.h"

namespace qel::collector {

/// The store accepts nothing now. The message may be logged.
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
/// `text` is the text as it was sent, byte for byte; it is stored once. `received` is the time of
/// its first receipt (UTC). `count` is its highest number in one package, so a package that is sent
/// again counts once. A column is NULL if the row has no such member. Any thread.
class Store {
 public:
  /// Opens the file, or creates it. Throws `StoreError`.
  explicit Store(const std::filesystem::path& file);
  ~Store();

  /// Stores the whole package or, if it throws `StoreError`, nothing of it. On return the package
  /// is on the disk.
  void add(const Package& package);

 private:
  class Database;

  utilities::Mutex mutex_;
  const std::unique_ptr<Database> database_ QEL_PT_GUARDED_BY(mutex_);
};

}  // namespace qel::collector
