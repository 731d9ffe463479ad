#include "tools/collector/ClickHouseStore.h"

#include <algorithm>
#include <array>
#include <utility>

#include "host/QelUtilities/ScopeGuard.h"
#include "tools/collector/ClickHouseSchema.h"

namespace qel::collector {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using std::chrono::system_clock;

/// How long the operations may take that have no deadline of their own.
constexpr auto patience = 10s;
constexpr auto measurementPause = 10s;

void append(ClickHouseRows& rows, const Upload& upload, system_clock::time_point received) {
  const Origin origin{upload.user, received};
  for (const Row& row : upload.package.environments) {
    rows.addEnvironment(row, origin);
  }
  for (const Row& row : upload.package.events) {
    rows.addEvent(row, origin);
  }
  for (const RefusedText& text : upload.package.refused) {
    rows.addRefused(text, origin);
  }
}

}  // namespace

ClickHouseStore::ClickHouseStore(const ClickHouseAccess& access, Missing missing)
    : connection_(access) {
  const auto deadline = steady_clock::now() + patience;
  if (missing == Missing::Create) {
    createSchema(connection_, deadline);
  }
  checkSchema(connection_, deadline);
  for (const auto& table : clickHouseTables()) {
    insertions_.push_back(insertionInto(table));
  }
  measure(deadline);
}

void ClickHouseStore::add(const Uploads& uploads, steady_clock::time_point deadline) {
  const bool isDoubtful = std::exchange(isDoubtful_, true);
  if (uploads.empty()) {
    // Collectors that wrote all the time would disturb each other on replicas with a quorum.
    isDoubtful ? rewriteVersion(connection_, deadline) : checkSchema(connection_, deadline);
  }
  const auto received = system_clock::now();
  for (const auto& upload : uploads) {
    append(rows_, *upload, received);
  }
  insert(rows_, deadline);
  isDoubtful_ = false;
  measure(deadline);
}

void ClickHouseStore::insert(ClickHouseRows& rows, steady_clock::time_point deadline) {
  const ScopeGuard end([&] { rows.clear(); });
  // A session's version is known when its events are.
  const std::array texts{&rows.events(), &rows.environments(), &rows.refused()};
  for (const std::size_t table : {1U, 0U, 2U}) {
    if (!texts.at(table)->empty()) {
      connection_.insert(insertions_[table], *texts.at(table), deadline);
    }
  }
}

bool ClickHouseStore::removeSome(system_clock::time_point before) {
  const auto day = std::chrono::floor<std::chrono::days>(before).time_since_epoch();
  for (const auto& table : clickHouseTables()) {
    remove(table.name,
           "received < toDateTime(" + std::to_string(std::chrono::seconds(day).count()) + ')');
  }
  remove(sessionDays().name, "received_day < toDate(" + std::to_string(day.count()) + ')');
  return false;
}

/// Rows are counted first, because a deletion costs much even if it deletes nothing.
void ClickHouseStore::remove(const std::string& table, const std::string& condition) {
  const auto deadline = steady_clock::now() + patience;
  const bool isAny =
      connection_.run("SELECT count() FROM " + table + " WHERE " + condition, deadline) != "0\n";
  if (isAny && !isDeletingFrom(connection_, table + '%', deadline)) {
    connection_.run(deletionFrom(connection_, table, deadline) + condition, deadline);
  }
}

StoreSize ClickHouseStore::size() const { return {bytes_, 0}; }

void ClickHouseStore::measure(steady_clock::time_point deadline) {
  const auto now = steady_clock::now();
  if (now < nextMeasurement_) {
    return;
  }
  nextMeasurement_ = now + measurementPause;
  try {
    bytes_ = std::stoull(connection_.run(
        "SELECT sum(bytes_on_disk) FROM system.parts WHERE database = currentDatabase()",
        std::min(now + 1s, deadline)));
  } catch (const std::exception&) {
    // The rows are stored all the same. The last size is still shown.
  }
}

}  // namespace qel::collector
