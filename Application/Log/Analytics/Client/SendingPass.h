#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"

namespace qel::log {
class LoggerInterface;
}

namespace qel::log::analytics {

namespace serverconnection {
class DbToServerConnectionInterface;
}

namespace details {

/// Rows of one table on their way into one package: references to their texts, and their IDs.
class PackageBatch {
 public:
  explicit PackageBatch(std::size_t sizeLimit) : sizeLimit_(sizeLimit) {}

  /// Adds a row, which must outlive the batch.
  void add(int id, const std::string& json);
  /// Whether the texts have reached the size limit, so that the batch is to be sent. The row that
  /// reaches it still belongs to it.
  bool isFull() const { return size_ >= sizeLimit_; }
  void clear();

  const std::vector<const std::string*>& texts() const { return texts_; }
  std::vector<int>& ids() { return ids_; }

 private:
  const std::size_t sizeLimit_;
  std::size_t size_ = 0;
  std::vector<const std::string*> texts_;
  std::vector<int> ids_;
};

/// One go at moving all stored rows to the server: environments first, then items, in packages,
/// each deleted from the database once it is accepted. A refused package ends the pass, and its
/// rows and all behind it stay. What the database or the connection throws ends it too.
class SendingPass {
 public:
  /// All four outlive the pass.
  SendingPass(CipDatabaseClientInterface& database,
              serverconnection::DbToServerConnectionInterface& connection, LoggerInterface& logger,
              std::size_t packageSizeLimit);

  void run();

 private:
  enum class Outcome { Accepted, Refused };

  Outcome send(CipDatabaseClientInterface::Table table,
               const CipDatabaseClientInterface::RowMap& rows);
  Outcome send(CipDatabaseClientInterface::Table table, PackageBatch& batch);

  CipDatabaseClientInterface& database_;
  serverconnection::DbToServerConnectionInterface& connection_;
  LoggerInterface& logger_;
  const std::size_t packageSizeLimit_;
};

}  // namespace details

}  // namespace qel::log::analytics
