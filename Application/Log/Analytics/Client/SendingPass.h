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

/// The rows of one table that go into one package: their IDs and references to their texts.
class PackageBatch {
 public:
  explicit PackageBatch(std::size_t sizeLimit) : sizeLimit_(sizeLimit) {}

  /// Adds a row. `json` must outlive the batch.
  void add(int id, const std::string& json);
  /// Whether the texts have reached the size limit, so that the batch must be sent. The row that
  /// reached the limit is part of the batch.
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

/// One attempt to send all stored rows to the server.
///
/// Environments go first, then items, in packages. The rows of a package are deleted from the
/// database once the server has accepted it. A refused package ends the pass: its rows and all
/// later ones stay. An exception from the database or the connection ends the pass, too.
class SendingPass {
 public:
  /// Database, connection and logger must outlive the pass.
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
