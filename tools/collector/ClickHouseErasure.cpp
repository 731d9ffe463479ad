#include "tools/collector/ClickHouseErasure.h"

#include <thread>

#include "tools/collector/ClickHouseText.h"

namespace qel::collector {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

/// How long a statement may take, and a deletion, which rewrites much.
constexpr auto longestStatement = 10min;
constexpr auto longestDeletion = 1h;

}  // namespace

ClickHouseErasure::ClickHouseErasure(const ClickHouseAccess& access,
                                     const std::string& installation, const std::string& user)
    : connection_(access) {
  checkSchema(connection_, steady_clock::now() + longestStatement);
  if (installation.empty()) {
    conditions_.fill("user = " + sqlLiteral(user));
  } else {
    conditions_.fill("installation = " + sqlLiteral(installation));
    conditions_.back() = "position(text, " + sqlLiteral('"' + installation + '"') + ") > 0";
  }
}

std::array<std::int64_t, 3> ClickHouseErasure::count() {
  return {count(0, "1"), count(1, "1"), count(2, "1")};
}

void ClickHouseErasure::run() {
  // Rows that arrive from now on are not erased.
  const auto deadline = steady_clock::now() + longestDeletion;
  const std::string now = connection_.run("SELECT toUInt32(now())", deadline);
  const std::string arrived = "received < toDateTime(" + now.substr(0, now.find('\n')) + ')';
  for (std::size_t table = 0; table < conditions_.size(); ++table) {
    remove(clickHouseTables()[table], conditions_.at(table), deadline);
  }
  for (std::size_t table = 0; table < conditions_.size(); ++table) {
    waitUntil([&] { return count(table, arrived) == 0; }, deadline);
  }
  // Last, because an insert that was under way reaches the events first.
  const ClickHouseTable& summary = sessionDays();
  remove(summary, conditions_.front(), deadline);
  waitUntil(
      [&] {
        // It does not say which rows of today arrived later.
        return !isDeletingFrom(connection_, summary.name + '%', deadline) ||
               connection_.run(
                   "SELECT count() FROM " + summary.name + " WHERE " + conditions_.front(),
                   deadline) == "0\n";
      },
      deadline);
}

void ClickHouseErasure::waitUntil(const std::function<bool()>& isDone,
                                  ClickHouseConnection::Deadline deadline) {
  while (!isDone()) {
    if (steady_clock::now() >= deadline) {
      connection_.fail("it is still deleting; see the table system.mutations");
    }
    std::this_thread::sleep_for(200ms);
  }
}

void ClickHouseErasure::remove(const ClickHouseTable& table, const std::string& condition,
                               ClickHouseConnection::Deadline deadline) {
  connection_.run(deletionFrom(connection_, table.name, deadline) + condition, deadline);
}

std::int64_t ClickHouseErasure::count(std::size_t table, const std::string& more) {
  return std::stoll(connection_.run("SELECT count() FROM " + clickHouseTables()[table].name +
                                        " FINAL WHERE (" + conditions_.at(table) + ") AND " + more,
                                    steady_clock::now() + longestStatement));
}

}  // namespace qel::collector
