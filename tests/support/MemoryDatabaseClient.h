#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"

namespace qel::test {

/// A database client that keeps its rows in memory and can be told to misbehave.
class MemoryDatabaseClient : public log::analytics::CipDatabaseClientInterface {
 public:
  using Batch = std::vector<std::pair<std::string, Table>>;

  /// Called before a batch is stored; may throw or block.
  std::function<void(const Batch&)> beforeBatch;
  /// Called before rows are read; may throw.
  std::function<void()> beforeRead;
  /// What was asked of this client, in order: "initialize DIR", "batch N", "delete TABLE id,id",
  /// "vacuum".
  std::vector<std::string> calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
  }

  /// The texts of the table's rows, by ascending ID.
  std::vector<std::string> texts(Table table) const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> texts;
    if (const auto rows = rows_.find(table); rows != rows_.end()) {
      for (const auto& [id, text] : rows->second) {
        texts.push_back(text);
      }
    }
    return texts;
  }

  void initialize(const std::string& directory) override { note("initialize " + directory); }
  void insertMultiple(const std::vector<std::string>& jsons, Table table) override {
    for (const auto& json : jsons) {
      insert(json, table);
    }
  }
  void insertMultiple(const Batch& batch) override {
    if (beforeBatch) {
      beforeBatch(batch);
    }
    note("batch " + std::to_string(batch.size()));
    for (const auto& [json, table] : batch) {
      insert(json, table);
    }
  }
  RowMap getAllItems() override { return getAll(Items).second; }
  void deleteItems(const RowMap& rows) override { erase(rows, Items); }
  std::pair<Table, RowMap> getAll(Table table) override {
    if (beforeRead) {
      beforeRead();
    }
    const std::lock_guard lock(mutex_);
    return {table, rows_[table]};
  }
  std::map<Table, RowMap> getAllFromSession(std::string) override { return {}; }
  void deleteEnvironments(RowMap rows) override { erase(rows, Environments); }
  void vacuum() override { note("vacuum"); }
  void deleteByIds(Table table, std::vector<int>& ids) override {
    std::string list;
    for (const int id : ids) {
      list += (list.empty() ? "" : ",") + std::to_string(id);
      const std::lock_guard lock(mutex_);
      rows_[table].erase(id);
    }
    note("delete " + std::to_string(table) + " " + list);
  }

 private:
  void note(std::string call) {
    const std::lock_guard lock(mutex_);
    calls_.push_back(std::move(call));
  }
  void insert(const std::string& json, Table table) {
    const std::lock_guard lock(mutex_);
    rows_[table].emplace(++lastId_, json);
  }
  void erase(const RowMap& rows, Table table) {
    const std::lock_guard lock(mutex_);
    for (const auto& [id, json] : rows) {
      rows_[table].erase(id);
    }
  }

  mutable std::mutex mutex_;
  std::map<Table, RowMap> rows_;    ///< guarded by mutex_
  std::vector<std::string> calls_;  ///< guarded by mutex_
  int lastId_ = 0;                  ///< guarded by mutex_
};

}  // namespace qel::test
