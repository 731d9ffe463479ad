#pragma once

#include <chrono>
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
class SendingState;

/// One attempt to send all stored rows to the server.
///
/// Environments are sent first, then items, both in packages. The rows of a package are deleted
/// from the database once the server has accepted the package. A rejected package ends the pass;
/// its rows and all later rows stay in the database. An exception from the database or the
/// connection also ends the pass. Once the state has ended, nothing more is sent or logged.
class SendingPass {
 public:
  /// The objects that are referred to must outlive the pass.
  SendingPass(CipDatabaseClientInterface& database,
              serverconnection::DbToServerConnectionInterface& connection, LoggerInterface& logger,
              SendingState& state, std::size_t packageSizeLimit);

  /// Returns false if the server rejected a package.
  bool run();

 private:
  enum class Outcome { Accepted, Refused, Ended };

  Outcome send(CipDatabaseClientInterface::Table table,
               const CipDatabaseClientInterface::RowMap& rows);
  Outcome send(CipDatabaseClientInterface::Table table, PackageBatch& batch);
  void noteAcceptance(PackageBatch& batch, std::chrono::steady_clock::duration time);

  CipDatabaseClientInterface& database_;
  serverconnection::DbToServerConnectionInterface& connection_;
  LoggerInterface& logger_;
  SendingState& state_;
  const std::size_t packageSizeLimit_;
};

}  // namespace details

}  // namespace qel::log::analytics
