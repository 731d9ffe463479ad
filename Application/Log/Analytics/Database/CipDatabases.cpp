#include "Application/Log/Analytics/Database/CipDatabases.h"

#include <chrono>

#include "Application/Log/Analytics/Client/ActivateParameter.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Items/CipInfoItem.h"
#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/Debugger.h"
#include "host/QelUtilities/Patience.h"

namespace qel::log::analytics {

namespace {

/// True if the batch is the dispatcher's report of a full queue. Nothing else creates such an item.
bool reportsFullQueue(const std::vector<AccumulatingDispatcher::Entry>& batch) {
  const auto* const info = dynamic_cast<const items::CipInfoItem*>(batch.front().first.get());
  return info != nullptr && info->getSubCategory() == "InsertingItems";
}

}  // namespace

CipDatabases::CipDatabases(std::unique_ptr<CipDatabaseClientInterface> cipDatabase,
                           std::unique_ptr<CipDatabaseClientInterface> supportDatabase)
    : cipDatabase_(std::move(cipDatabase)),
      supportDatabase_(std::move(supportDatabase)),
      dispatcher_([this](const auto& batch) { write(batch); }, std::chrono::duration<double>(1.0),
                  10'000) {
  dispatcher_.start();
}

void CipDatabases::initialize(const parameters::ActivateParameter& parameter) {
  cipDatabase_->initialize(parameter.databasePath);
  supportDatabase_->initialize(parameter.databasePath);
  Permissions fresh{
      .toSending = std::make_shared<std::function<bool()>>(parameter.isSendingAllowed),
      .toSupport = std::make_shared<std::function<bool()>>(parameter.databaseCallback)};
  const utilities::MutexLock lock(permissionMutex_);
  std::swap(permissions_, fresh);
}

void CipDatabases::insert(std::unique_ptr<qel::json::ToJsonInterface> item,
                          CipDatabaseClientInterface::Table table) {
  dispatcher_.add(std::move(item), table);
}

bool CipDatabases::getWriteToCipDatabaseFunc() const { return isAllowed(permissions().toSending); }

bool CipDatabases::errorOccurred() const { return dispatcher_.hasFailed(); }

void CipDatabases::join() { dispatcher_.join(); }

/// A database client that is not initialized does nothing.
void CipDatabases::close() {
  dispatcher_.close();
  const utilities::Patience::StopTime now(std::chrono::steady_clock::now());
  const utilities::Patience patience(utilities::Patience::none, now);  // retention ends at once
  cipDatabase_ = std::make_unique<CipDatabaseClient>();
  supportDatabase_ = std::make_unique<CipDatabaseClient>();
}

void CipDatabases::write(const std::vector<AccumulatingDispatcher::Entry>& batch) {
  try {
    std::vector<std::pair<std::string, CipDatabaseClientInterface::Table>> rows;
    rows.reserve(batch.size());
    for (const auto& [item, table] : batch) {
      rows.emplace_back(item->toJson(), table);
    }
    if (reportsFullQueue(batch)) {
      LogManager::instance()
          .getLogger("qel.log.analytics.CipDatabases")
          ->log(Level::Error, "the queue is full, so storage has ended: " + rows.front().first);
    }
    if (isAllowed(permissions().toSupport)) {
      supportDatabase_->insertMultiple(rows);
    }
    if (isAllowed(permissions().toSending)) {
      cipDatabase_->insertMultiple(rows);
    }
  } catch (...) {
    utilities::debugger::Debugger::vBreak();
    throw;
  }
}

/// Returns a copy, so that the mutex is not locked while the host's functions are called.
CipDatabases::Permissions CipDatabases::permissions() const {
  const utilities::MutexLock lock(permissionMutex_);
  return permissions_;
}

bool CipDatabases::isAllowed(const Permission& permission) {
  if (!permission) {
    throw std::bad_function_call();
  }
  return (*permission)();
}

}  // namespace qel::log::analytics
