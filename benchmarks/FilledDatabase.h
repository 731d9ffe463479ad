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

/// A client that uses such a database.
struct FilledDatabase : FilledDirectory {
  /// Throws `std::logic_error` when the client replaces the database by a new one.
  explicit FilledDatabase(int rows);

  log::analytics::CipDatabaseClient client;
};

/// The same without a client.
struct FilledRawDatabase : FilledDirectory {
  explicit FilledRawDatabase(int rows) : FilledDirectory(rows) {}

  RawDatabase raw{directory.path(), RawDatabase::sending};
};

}  // namespace qel::benchmarks
