#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "host/QelUtilities/Exception.h"
#include "tools/collector/PackageReader.h"

struct sqlite3;
struct sqlite3_stmt;

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

  /// Stores the package whole or, when it throws `StoreError`, not at all. On return all of it is
  /// on the disk.
  void add(const Package& package);

 private:
  class Insertion;
  class Transaction;
  struct Close {
    void operator()(sqlite3* connection) const;
    void operator()(sqlite3_stmt* statement) const;
  };
  using Statement = std::unique_ptr<sqlite3_stmt, Close>;

  void execute(const char* sql);
  Statement prepare(const std::string& sql);
  void addRow(const Statement& statement, const Row& row, std::size_t columns);
  void addRefused(const RefusedText& refused);
  [[noreturn]] void fail() const;

  const std::string name_;
  std::mutex mutex_;
  // Guarded by mutex_.
  std::unique_ptr<sqlite3, Close> connection_;
  Statement addEvent_;
  Statement addEnvironment_;
  Statement addRefused_;
};

}  // namespace qel::collector
