#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <thread>

#include "Application/Log/Analytics/Database/DatabaseAdapterTimestampDecorator.h"
#include "Application/Log/Analytics/Database/DatabaseFormat.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "host/QelUtilities/Debugger.h"
#include "host/QelUtilities/ExitDeadline.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/Patience.h"
#include "host/QelUtilities/ProcessEnd.h"

namespace qel::log::analytics {
namespace {

using details::DatabaseAdapterTimestampDecorator;
using utilities::Patience;

/// How long the deletion of old rows may go on after the client is released. It ends at once if the
/// releasing thread must stop.
constexpr std::chrono::seconds timeAfterRelease{1};

/// Examines each row once, because a long table takes seconds to read.
void deleteOldRows(DatabaseAdapterTimestampDecorator& adapter, const std::string& table,
                   std::chrono::seconds age) {
  std::int64_t examined = 0;
  while (const auto last = adapter.deleteSomeEntriesOlderThan(table, age, examined)) {
    examined = *last;
  }
  if (!Patience::mustStop()) {
    adapter.deleteEntriesOlderThan(table, age, examined);
  }
}

/// The work of the retention thread. An interruption loses at most the rows that the last
/// transaction has deleted, and the next start deletes them.
void deleteOldRows(DatabaseAdapterTimestampDecorator& adapter, std::chrono::seconds age,
                   const Patience::StopTime& stopTime) {
  const Patience patience(Patience::unlimited, stopTime);
  try {
    deleteOldRows(adapter, *details::tableName(CipDatabaseClientInterface::Items), age);
    deleteOldRows(adapter, *details::tableName(CipDatabaseClientInterface::Environments), age);
  } catch (...) {
    utilities::debugger::Debugger::vBreak();
  }
}

/// The thread is detached and shares ownership of the adapter, so the thread can outlive the
/// client.
void startRetention(std::shared_ptr<DatabaseAdapterTimestampDecorator> adapter,
                    std::chrono::seconds age, std::shared_ptr<const Patience::StopTime> stopTime) {
  utilities::keepLoaded([] {});
  try {
    std::thread([adapter = std::move(adapter), age, stopTime = std::move(stopTime)] {
      deleteOldRows(*adapter, age, *stopTime);
    }).detach();
  } catch (...) {  // The thread could not be created.
    utilities::debugger::Debugger::vBreak();
  }
}

}  // namespace

SupportDatabaseClient::SupportDatabaseClient(std::optional<std::chrono::seconds> retention)
    : retention_(retention),
      retentionStop_(std::make_shared<Patience::StopTime>(Patience::neverStop)) {}

SupportDatabaseClient::~SupportDatabaseClient() {
  const auto now = std::chrono::steady_clock::now();
  *retentionStop_ =
      Patience::mustStop() ? now : std::min(now + timeAfterRelease, utilities::exitDeadline());
}

void SupportDatabaseClient::initialize(const std::string& directory) {
  const Patience none(Patience::none);
  auto path = utilities::pathFromUtf8(directory) / format::supportDatabase;
  auto adapter = std::make_shared<DatabaseAdapterTimestampDecorator>(
      std::make_shared<qel::db::sql::SqlDatabaseAdapter>(path));
  addTables(*adapter);
  if (retention_) {
    startRetention(adapter, *retention_, retentionStop_);
  }
  use(std::move(adapter), std::move(path));
}

void SupportDatabaseClient::insertMultiple(const std::vector<std::string>& jsons, Table table) {
  if (const auto open = adapter()) {
    insertEach(*open, jsons, *details::tableName(table == Items ? Items : Environments));
  }
}

void SupportDatabaseClient::insertMultiple(const std::vector<std::pair<std::string, Table>>& rows) {
  if (const auto open = adapter()) {
    insertTogether(*open, rows);
  }
}

std::map<CipDatabaseClientInterface::Table, CipDatabaseClientInterface::RowMap>
SupportDatabaseClient::getAllFromSession(std::string sessionId) {
  const Patience patience;
  std::map<Table, RowMap> rows;
  if (const auto open = adapter()) {
    for (const auto table : {Items, Environments}) {
      rows[table] = open->getAllFromSession(*details::tableName(table), sessionId);
    }
  }
  return rows;
}

}  // namespace qel::log::analytics
