#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tools/collector/Store.h"

namespace qel::collector {

/// What restricts an answer. Empty members do not restrict it. A figure ignores the members that it
/// does not know.
struct Filter {
  std::string from;          ///< first day, "YYYY-MM-DD", UTC, of the client's clock
  std::string until;         ///< last day, inclusive
  std::string version;       ///< exact
  std::string installation;  ///< exact
  std::string session;       ///< beginning of an ID; only "sessions"
  std::string end;           ///< "crashed", "stopped" or "unknown"; only "sessions"
  std::string after;         ///< cursor of the last row that is known; only "live"
  std::size_t limit = 200;   ///< of "sessions", "live" and "refused"
};

/// Empty where the store has no value.
using Cell = std::variant<std::monostate, std::int64_t, double, std::string>;

struct ResultTable {
  std::vector<std::string> columns;
  std::vector<std::vector<Cell>> rows;
  std::string cursor;  ///< only "live": the next `after`; empty if it is that of the last row
};

/// A record of a session, as it was sent.
struct StoredRecord {
  bool isEnvironment = false;
  std::string text;
  std::int64_t count = 1;  ///< how often one package had the text
};

/// The records of a session, the environment records first, in the order of arrival.
struct StoredSession {
  std::vector<StoredRecord> records;
  bool isShortened = false;  ///< whether older records are left out
};

/// What `StoreReader::session` returns at most.
struct SessionLimits {
  static constexpr std::size_t records = 20'000;
  static constexpr std::size_t bytes = std::size_t{32} << 20;  ///< of texts
};

/// Answers questions about a store while collectors write to it. docs/collector-api.md has the
/// figures and their columns. Used by one thread at a time.
///
/// **Errors.** The operations throw `StoreError` if the store cannot be read, or the deadline
/// passes.
class StoreReader {
 public:
  StoreReader() = default;
  StoreReader(const StoreReader&) = delete;
  StoreReader& operator=(const StoreReader&) = delete;
  virtual ~StoreReader() = default;

  /// Throws `std::invalid_argument` if there is no such figure. All rows are of one moment.
  virtual ResultTable read(std::string_view figure, const Filter& filter,
                           std::chrono::steady_clock::time_point deadline) = 0;

  /// A session without records if the store has none. Beyond `SessionLimits`, the newest records
  /// are kept, environment records before events.
  virtual StoredSession session(const std::string& id,
                                std::chrono::steady_clock::time_point deadline) = 0;

  /// The IDs that begin with this text, at most `limit`, short ones first. Case, hyphens and braces
  /// do not count.
  virtual std::vector<std::string> sessionsBeginningWith(
      const std::string& beginning, std::size_t limit,
      std::chrono::steady_clock::time_point deadline) = 0;

  /// Makes the operation in progress, and later ones, fail soon. Thread-safe.
  virtual void interrupt() = 0;
};

}  // namespace qel::collector
