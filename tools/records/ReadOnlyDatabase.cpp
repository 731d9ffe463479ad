#include "tools/records/ReadOnlyDatabase.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include <sqlite3.h>

#include "host/QelSql/FileNames.h"
#include "host/QelUtilities/PathText.h"
#include "tools/common/DelayedInterruption.h"

namespace qel::records {
namespace {

constexpr std::int64_t rowsBetweenReports = 4096;

std::uintmax_t sizeOf(const std::filesystem::path& file) {
  std::error_code unreadable;
  const auto size = std::filesystem::file_size(file, unreadable);
  return unreadable ? 0 : size;
}

/// The maximum number of a client's rows that fit into the file and its write-ahead log.
std::int64_t mostRows(const std::filesystem::path& file) {
  constexpr std::uintmax_t smallestRow = 32;
  const auto log = std::filesystem::path(file) += db::sql::walSuffix;
  return static_cast<std::int64_t>((sizeOf(file) + sizeOf(log)) / smallestRow);
}

std::string selection(const ReadOnlyDatabase::Query& query) {
  return "SELECT " + query.columns + " FROM " + query.table + " WHERE " + query.id;
}

}  // namespace

void ReadOnlyDatabase::forEachRow(const Query& query, const RowReader& reader,
                                  std::int64_t position) {
  Statement rows(connection_.handle(), selection(query) + " > ? ORDER BY " + query.id);
  Flaws found;
  if (rows.code() == SQLITE_OK) {
    found = read(rows, query, reader, position);
  } else if (rows.code() == SQLITE_BUSY) {
    connection_.fail(rows.code());
  } else if (mostRows(connection_.file()) > 0) {
    const auto& why = connection_.whyUnreadable();
    found.reason = why.empty() ? connection_.lastError() : why;
  }
  remember(query.table, found);
}

void ReadOnlyDatabase::forEachRow(const Query& query, const std::vector<std::int64_t>& ids,
                                  const RowReader& reader) {
  Statement row(connection_.handle(), selection(query) + " = ?");
  Flaws found;
  for (const auto id : ids) {
    row.restart(id);
    const int code = row.step();
    if (code == SQLITE_ROW) {
      readRow(row, reader, found);
    } else if (isDamage(code)) {
      ++found.unreadable;
    } else if (code != SQLITE_DONE) {  // Otherwise the row was removed in the meantime.
      connection_.fail(code);
    }
  }
  remember(query.table, found);
}

std::optional<std::vector<std::int64_t>> ReadOnlyDatabase::numbers(
    const std::string& statement) const {
  Statement rows(connection_.handle(), statement);
  std::vector<std::int64_t> numbers;
  int code = rows.step();
  for (; code == SQLITE_ROW; code = rows.step()) {
    numbers.push_back(rows.number(0));
  }
  return code == SQLITE_DONE ? std::optional(std::move(numbers)) : std::nullopt;
}

void ReadOnlyDatabase::remember(const std::string& table, const Flaws& found) {
  Flaws& flaws = flaws_[table];
  flaws.unreadable = std::max(flaws.unreadable, found.unreadable);
  flaws.unintelligible = std::max(flaws.unintelligible, found.unintelligible);
  flaws.counted = found.counted;
  flaws.reason = found.reason;
}

/// Passes the row to `reader`, counts its flaws and returns its ID.
std::int64_t ReadOnlyDatabase::readRow(const Statement& row, const RowReader& reader,
                                       Flaws& flaws) {
  const auto id = row.number(0);
  const bool null = row.isNull(1);
  if (!null && row.text(1).data() == nullptr) {
    ++flaws.unreadable;
  } else if (!reader(row)) {
    ++flaws.unintelligible;
  }
  return id;
}

void ReadOnlyDatabase::report(std::int64_t position, std::int64_t highest) const {
  tools::DelayedInterruption::check();
  if (progress_) {
    progress_(static_cast<double>(position) / static_cast<double>(highest));
  }
}

ReadOnlyDatabase::Flaws ReadOnlyDatabase::read(Statement& rows, const Query& query,
                                               const RowReader& reader,
                                               std::int64_t position) const {
  Flaws flaws;
  const auto most = mostRows(connection_.file());
  const auto known = highestId(query);
  const auto highest = known.value_or(most);
  flaws.counted = known.has_value();
  auto stepsLeft = 2 * most;  // The pages of a damaged file can form a cycle.
  const auto reportAtTimes = [&] {
    if (stepsLeft % rowsBetweenReports == 0) {
      report(position, highest);
    }
  };
  for (;;) {
    rows.restart(position);  // All rows up to this ID have been read.
    int code = rows.step();
    for (; code == SQLITE_ROW && stepsLeft > 0; code = rows.step(), --stepsLeft) {
      const auto id = readRow(rows, reader, flaws);
      if (id > position && id <= highest) {  // Otherwise the ID itself is damaged.
        position = id;
      }
      reportAtTimes();
    }
    if (code == SQLITE_DONE || code == SQLITE_ROW) {
      return flaws;
    }
    if (!isDamage(code)) {
      connection_.fail(code);
    }
    ++flaws.unreadable;
    if (position >= highest || --stepsLeft < 0) {
      return flaws;
    }
    ++position;  // The next row, or a page on the path to it, is damaged; later rows may be intact.
    reportAtTimes();
  }
}

/// The highest ID in the table; `std::nullopt` if the file is too damaged to contain it.
std::optional<std::int64_t> ReadOnlyDatabase::highestId(const Query& query) const {
  for (const auto& question : {"SELECT seq FROM sqlite_sequence WHERE name = '" + query.table + "'",
                               "SELECT max(" + query.id + ") FROM " + query.table}) {
    const auto answer = numbers(question);
    if (answer && !answer->empty() && answer->front() > 0) {
      return answer->front();
    }
  }
  return std::nullopt;
}

bool ReadOnlyDatabase::isReadWholly() const {
  return std::all_of(flaws_.begin(), flaws_.end(), [](const auto& flawsOfTable) {
    return flawsOfTable.second.reason.empty() && flawsOfTable.second.unreadable == 0;
  });
}

std::vector<std::string> ReadOnlyDatabase::remarks() const {
  auto lines = connection_.remarks();
  const auto name = utilities::utf8FromPath(connection_.file().filename());
  const auto add = [&](const std::string& what) { lines.push_back(name + ": " + what); };
  for (const auto& [table, flaws] : flaws_) {
    if (!flaws.reason.empty()) {
      add("the table " + table + " cannot be read: " + flaws.reason);
    }
    if (flaws.unreadable > 0) {
      add("the file is damaged: " +
          (flaws.counted ? "up to " + std::to_string(flaws.unreadable) : "some") + " rows of " +
          table + " are skipped");
    }
    if (flaws.unintelligible > 0) {
      add(std::to_string(flaws.unintelligible) + " rows of " + table +
          " hold no record of a client and are skipped");
    }
  }
  return lines;
}

}  // namespace qel::records
