#pragma once

#include <cstddef>

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"

namespace qel::log {
class LoggerInterface;
}

namespace qel::log::analytics {

namespace serverconnection {
class DbToServerConnectionInterface;
}

namespace details {

class PackageBatch;

/// One attempt to send all stored rows to the server.
///
/// Environments are sent first, then items, both in packages. The rows of a package are deleted
/// from the database once the server has accepted the package. A rejected package ends the pass;
/// its rows and all later rows stay in the database. An exception from the database or the
/// connection also ends the pass.
class SendingPass {
 public:
  /// The database, the connection and the logger must outlive the pass.
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
