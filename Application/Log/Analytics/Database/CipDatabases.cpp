#include "Application/Log/Analytics/Database/CipDatabases.h"

#include "host/QelUtilities/Debugger.h"

namespace qel::log::analytics {

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
  const std::lock_guard lock(permissionMutex_);
  writeToCipDatabaseFunc_ = parameter.isSendingAllowed;
  writeToSupportDatabaseFunc_ = parameter.databaseCallback;
}

void CipDatabases::insert(std::unique_ptr<qel::json::ToJsonInterface> item,
                          CipDatabaseClientInterface::Table table) {
  dispatcher_.add(std::move(item), table);
}

bool CipDatabases::getWriteToCipDatabaseFunc() const {
  return permissionTo(writeToCipDatabaseFunc_)();
}

bool CipDatabases::errorOccurred() const { return dispatcher_.hasFailed(); }

void CipDatabases::join() { dispatcher_.join(); }

void CipDatabases::write(const std::vector<AccumulatingDispatcher::Entry>& batch) {
  try {
    std::vector<std::pair<std::string, CipDatabaseClientInterface::Table>> rows;
    rows.reserve(batch.size());
    for (const auto& [item, table] : batch) {
      rows.emplace_back(item->toJson(), table);
    }
    if (permissionTo(writeToSupportDatabaseFunc_)()) {
      supportDatabase_->insertMultiple(rows);
    }
    if (permissionTo(writeToCipDatabaseFunc_)()) {
      cipDatabase_->insertMultiple(rows);
    }
  } catch (...) {
    utilities::debugger::Debugger::vBreak();
    throw;
  }
}

/// A copy, so that the host is asked without the mutex.
CipDatabases::Permission CipDatabases::permissionTo(const Permission& which) const {
  const std::lock_guard lock(permissionMutex_);
  return which;
}

}  // namespace qel::log::analytics
