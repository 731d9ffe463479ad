#pragma once

#include <filesystem>
#include <memory>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/Mutex.h"
#include "tools/collector/PackageReader.h"

namespace qel::collector {

/// The store cannot take anything now; the message is fit for a log.
class StoreError : public qel::exception {
 public:
  using qel::exception::exception;
};

/// Everything that was received, in an SQLite file with three tables:
///
/// - `events`: id, received, count, session, installation, time, category, subcategory, event, text
/// - `environments`: id, received, count, session, installation, time, text
/// - `refused`: id, received, count, reason, text
///
/// `text` is what was sent, byte for byte, and stands once; `received` is when it came first (UTC);
/// `count` is the highest number of times that one package held it, so that a package sent again
/// counts once. A column is NULL where the row has no such member. Any thread.
class Store {
 public:
  /// Opens the file, or makes it. Throws `StoreError`.
  explicit Store(const std::filesystem::path& file);
  ~Store();

  /// Stores the package whole or, when it throws `StoreError`, not at all. On return all of it is
  /// on the disk.
  void add(const Package& package);

 private:
  class Database;

  utilities::Mutex mutex_;
  const std::unique_ptr<Database> database_ QEL_PT_GUARDED_BY(mutex_);
};

}  // namespace qel::collector
