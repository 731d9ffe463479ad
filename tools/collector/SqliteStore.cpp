#include "tools/collector/SqliteStore.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <exception>
#include <string>
#include <system_error>

#include <sqlite3.h>

#include "host/QelLog/LogManager.h"
#include "tools/collector/RowKey.h"
#include "tools/collector/SqliteExecution.h"

namespace qel::collector {
namespace {

using std::chrono::steady_clock;
using std::chrono::system_clock;

constexpr std::uint64_t megabyte = 1'000'000;

/// The log is emptied at this size if no reader uses it. A larger one is not moved into the file
/// when the store is closed, because that takes long.
constexpr std::uint64_t largestLog = 256 * megabyte;

/// The pages that are changed often must fit into the cache (in kilobytes), or each row costs
/// several reads. The log is moved into the file at 16,000 pages, because that moves a page only
/// once that several transactions have changed.
constexpr const char* settings = R"(
  PRAGMA journal_mode = WAL;
  PRAGMA cache_size = -64000;
  PRAGMA wal_autocheckpoint = 16000;
  PRAGMA journal_size_limit = 134217728;
)";

/// How many rows of a table `removeSome` examines, and how long it may take for them.
constexpr std::int64_t largestStep = 1000;
constexpr std::chrono::seconds longestRemoval{1};

/// The number of column members that an environment has. An event has all of them.
constexpr std::size_t environmentColumns = 3;

/// The parameters are received, key, count, user, text, and the table's columns.
std::string insertion(const SqliteTable& table) {
  std::string parameters = "?, ?, ?, ?, ?, ?";
  for (const char letter : std::string_view(table.columns)) {
    parameters += letter == ',' ? ", ?" : "";
  }
  return std::string("INSERT INTO ") + table.name + " (received, key, count, user, text, " +
         table.columns + ") VALUES (" + parameters + ") ON CONFLICT (key) DO NOTHING";
}

/// In the format of the column `received`.
std::string utcText(system_clock::time_point time) {
  const auto milliseconds =
      std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
  const std::time_t seconds =
      system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(time));
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::array<char, 64> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S.", &parts);
  return std::string(text.data(), length) + std::to_string(1000 + milliseconds % 1000).substr(1) +
         'Z';
}

SummedRow summedRow(const Row& row, std::int64_t id, std::int64_t count) {
  const auto column = [&](std::size_t index) {
    return row.columns[index] ? std::string_view(*row.columns[index]) : std::string_view();
  };
  return {id, count, column(0), column(1), column(2), column(3), column(4), column(5), row.text};
}

std::uint64_t sizeOf(const std::filesystem::path& file) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  return error ? 0 : size;
}

}  // namespace

SqliteStore::SqliteStore(const std::filesystem::path& file)
    : file_(std::filesystem::absolute(file)), connection_(file, SqliteConnection::Missing::Create) {
  prepareSchema(connection_);
  connection_.execute(settings);
  summaries_.emplace(connection_);
  connection_.setDeadline(steady_clock::time_point::max());
  summaries_->change([] {});  // Another program may have inserted many rows.
  connection_.setDeadline(steady_clock::now() + SqliteConnection::patience);
  for (std::size_t index = 0; index < tables_.size(); ++index) {
    prepare(tables_[index], sqliteTables[index]);
  }
}

void SqliteStore::prepare(Table& table, const SqliteTable& description) {
  const std::string name = description.name;
  table.insertion = connection_.prepare(insertion(description));
  table.stored = connection_.prepare("SELECT id, count FROM " + name + " WHERE key = ?");
  table.raising = connection_.prepare("UPDATE " + name + " SET count = ? WHERE id = ?");
  // The last id of the next rows, whether one of them is old, and whether one is from the future.
  table.oldest = connection_.prepare(
      "SELECT ifnull(max(id), 0), ifnull(min(received) < ?, 0), ifnull(max(received) > ?, 0)"
      " FROM (SELECT id, received FROM " +
      name + " WHERE id > ? ORDER BY id LIMIT ?)");
  table.old =
      connection_.prepare("SELECT id FROM " + name + " WHERE id > ? AND id <= ? AND received < ?");
  table.removal.emplace(connection_, *summaries_, name);
  table.step = largestStep;
}

SqliteStore::~SqliteStore() {
  if (SqliteStore::size().log > largestLog) {
    sqlite3_db_config(connection_.handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  }
}

void SqliteStore::add(const Uploads& uploads, steady_clock::time_point deadline) {
  connection_.setDeadline(deadline);
  summaries_->change([&] {
    const std::string received = utcText(system_clock::now());
    for (const auto& upload : uploads) {
      add(*upload, received);
    }
    if (uploads.empty()) {
      rewriteVersion(connection_);
    }
  });
  limitLog();
}

void SqliteStore::add(const Upload& upload, std::string_view received) {
  const Origin origin{received, upload.user};
  for (const Row& row : upload.package.environments) {
    const Change change = addRow(tables_[Environments], origin, row, environmentColumns);
    if (change.count > 0) {
      const SummedRow summed = summedRow(row, change.id, change.count);
      summaries_->of(summed).addEnvironment(summed);
    }
  }
  for (const Row& row : upload.package.events) {
    const Change change = addRow(tables_[Events], origin, row, tools::columnMembers.size());
    if (change.count > 0) {
      const SummedRow summed = summedRow(row, change.id, change.count);
      auto& summary = summaries_->of(summed);
      change.isNew ? summary.addEvent(summed) : summary.countEvent(summed);
    }
  }
  for (const RefusedText& refused : upload.package.refused) {
    addRefused(origin, refused);
  }
}

SqliteStore::Change SqliteStore::addRow(const Table& table, const Origin& origin, const Row& row,
                                        std::size_t columns) {
  const auto& session = row.columns.front();
  const Sha256 key =
      keyOf(session ? std::optional<std::string_view>(*session) : std::nullopt, sha256(row.text));
  const auto count = static_cast<std::int64_t>(row.count);
  SqliteExecution execution(connection_, table.insertion);
  execution.bindText(origin.received)
      .bindBlob(bytesOf(key))
      .bindNumber(count)
      .bindText(origin.user)
      .bindText(row.text);
  for (std::size_t column = 0; column < columns; ++column) {
    const auto& value = row.columns[column];
    value ? execution.bindText(*value) : execution.bindNull();
  }
  return insertOrRaise(table, execution, key, count);
}

void SqliteStore::addRefused(const Origin& origin, const RefusedText& refused) {
  const Sha256 key = sha256(refused.text);
  const auto count = static_cast<std::int64_t>(refused.count);
  SqliteExecution execution(connection_, tables_[Refused].insertion);
  execution.bindText(origin.received)
      .bindBlob(bytesOf(key))
      .bindNumber(count)
      .bindText(origin.user)
      .bindBlob(refused.text)
      .bindText(refused.reason);
  insertOrRaise(tables_[Refused], execution, key, count);
}

/// Inserts the row, or raises the count of the one that has its key.
SqliteStore::Change SqliteStore::insertOrRaise(const Table& table, SqliteExecution& insertion,
                                               const Sha256& key, std::int64_t count) {
  insertion.step();
  if (sqlite3_changes(connection_.handle()) > 0) {
    return {sqlite3_last_insert_rowid(connection_.handle()), count, true};
  }
  Change change;
  {
    SqliteExecution stored(connection_, table.stored);
    stored.bindBlob(bytesOf(key)).step();
    change = {stored.number(0), count - stored.number(1), false};
  }
  if (change.count > 0) {
    SqliteExecution(connection_, table.raising).bindNumber(count).bindNumber(change.id).step();
  }
  return change;
}

bool SqliteStore::removeSome(system_clock::time_point before) {
  const std::string limit = utcText(before);
  const std::string now = utcText(system_clock::now());
  bool isMore = false;
  std::exception_ptr failure;
  for (Table& table : tables_) {
    connection_.setDeadline(steady_clock::now() + longestRemoval);
    try {
      isMore = removeSome(table, limit, now) || isMore;
      table.step = std::min(largestStep, 2 * table.step);
    } catch (const StoreError&) {
      failure = std::current_exception();
      isMore = table.step > 1 || isMore;  // A smaller step may succeed: long texts take long.
      table.step = std::max<std::int64_t>(1, table.step / 2);
    }
  }
  limitLog();
  if (failure && !isMore) {
    std::rethrow_exception(failure);
  }
  return isMore;
}

/// Examines the next rows in the order of arrival. Ends at the first rows of which none is old.
/// Rows from the future are passed over: the clock was wrong when they arrived.
bool SqliteStore::removeSome(Table& table, std::string_view before, std::string_view now) {
  std::int64_t last = 0;
  bool hasOld = false;
  bool isMore = false;
  {
    SqliteExecution execution(connection_, table.oldest);
    execution.bindText(before)
        .bindText(now)
        .bindNumber(table.checked)
        .bindNumber(table.step)
        .step();
    last = execution.number(0);
    hasOld = execution.number(1) != 0;
    isMore = hasOld || execution.number(2) != 0;
  }
  if (hasOld) {
    summaries_->change([&] {
      SqliteExecution execution(connection_, table.old);
      execution.bindNumber(table.checked).bindNumber(last).bindText(before);
      table.removal->remove(execution.numbers());
    });
  }
  table.checked = isMore ? last : 0;
  return isMore;
}

StoreSize SqliteStore::size() const {
  std::filesystem::path log = file_;
  log += "-wal";
  return {sizeOf(file_), sizeOf(log)};
}

/// Empties a large log unless a reader uses it, without waiting.
void SqliteStore::limitLog() {
  connection_.setDeadline(steady_clock::now());
  const bool isLarge = size().log > largestLog && !connection_.truncateLog();
  if (isLarge && !reportedLog_) {
    log::LogManager::instance()
        .getLogger("qel.collector")
        ->log(log::Level::Warning, "the log of the store has more than " +
                                       std::to_string(largestLog / megabyte) +
                                       " MB because a reader does not end its transaction");
  }
  reportedLog_ = isLarge;
}

}  // namespace qel::collector
