#pragma once

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "benchmarks/RawDatabase.h"
#include "tests/support/TemporaryDirectory.h"

namespace qel::benchmarks {

/// A new directory with a sending database of typical items.
struct FilledDirectory {
  explicit FilledDirectory(int rows) { copyDatabase(rows, directory.path()); }

  const test::TemporaryDirectory directory;
};

/// A database client that uses the database of a `FilledDirectory`.
struct FilledDatabase : FilledDirectory {
  /// Throws `std::logic_error` if the client replaces the database with a new one.
  explicit FilledDatabase(int rows);

  log::analytics::CipDatabaseClient client;
};

/// The database of a `FilledDirectory`, used without a client.
struct FilledRawDatabase : FilledDirectory {
  explicit FilledRawDatabase(int rows) : FilledDirectory(rows) {}

  RawDatabase raw{directory.path(), RawDatabase::sending};
};

}  // namespace qel::benchmarks
