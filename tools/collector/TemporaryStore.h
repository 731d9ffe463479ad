#pragma once

#include <filesystem>
#include <memory>

#include "host/QelUtilities/Mutex.h"
#include "tools/collector/Store.h"

namespace qel::collector {

/// Stands in for the store until it exists.
class TemporaryStore : public Store {
 public:
  explicit TemporaryStore(const std::filesystem::path& file);
  ~TemporaryStore() override;
  void add(const Uploads& uploads, std::chrono::steady_clock::time_point deadline) override;
  bool removeSome(std::chrono::system_clock::time_point /*before*/) override { return false; }
  StoreSize size() const override { return {}; }

 private:
  class Database;
  utilities::Mutex mutex_;
  std::unique_ptr<Database> database_;
};

}  // namespace qel::collector
