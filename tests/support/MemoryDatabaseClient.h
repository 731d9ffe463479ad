#pragma once

#include <atomic>
#include <functional>
#include <mutex>

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"

namespace qel::test {

using namespace log::analytics;

/// A database client that keeps its rows in memory and can be made to fail. Operations that the
/// library does not use do nothing.
class MemoryDatabaseClient : public CipDatabaseClientInterface {
 public:
  /// Called before a batch is stored; may throw or block.
  std::function<void()> beforeBatch = [] {};
  /// Called before rows are read; may throw.
  std::function<void()> beforeRead = [] {};
  std::atomic<int> vacuums = 0;

  /// The texts of the table's rows, by ascending ID.
  std::vector<std::string> texts(Table table) const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> texts;
    for (const auto& [id, text] : rows_[table]) {
      texts.push_back(text);
    }
    return texts;
  }

  void initialize(const std::string&) override {}
  void insertMultiple(const std::vector<std::string>& jsons, Table table) override {
    const std::lock_guard lock(mutex_);
    for (const auto& json : jsons) {
      rows_[table].emplace(++lastId_, json);
    }
  }
  void insertMultiple(const std::vector<std::pair<std::string, Table>>& batch) override {
    beforeBatch();
    for (const auto& [json, table] : batch) {
      insertMultiple({json}, table);
    }
  }
  std::pair<Table, RowMap> getAll(Table table) override {
    beforeRead();
    const std::lock_guard lock(mutex_);
    return {table, rows_[table]};
  }
  void vacuum() override { ++vacuums; }
  void deleteByIds(Table table, std::vector<int>& ids) override {
    const std::lock_guard lock(mutex_);
    for (const int id : ids) {
      rows_[table].erase(id);
    }
  }
  RowMap getAllItems() override { return {}; }
  /// All rows, whatever the session.
  std::map<Table, RowMap> getAllFromSession(std::string) override {
    const std::lock_guard lock(mutex_);
    return {{Items, rows_[Items]}, {Environments, rows_[Environments]}};
  }
  void deleteItems(const RowMap&) override {}
  void deleteEnvironments(RowMap) override {}

 private:
  mutable std::mutex mutex_;
  mutable std::map<Table, RowMap> rows_;  ///< guarded by mutex_
  int lastId_ = 0;                        ///< guarded by mutex_
};

}  // namespace qel::test
