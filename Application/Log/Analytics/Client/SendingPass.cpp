#include "Application/Log/Analytics/Client/SendingPass.h"

#include "Application/Log/Analytics/Client/PackageBatch.h"
#include "Application/Log/Analytics/Items/ItemWrapper.h"
#include "Application/Log/Analytics/ServerConnection/DbToServerConnectionInterface.h"
#include "host/QelLog/LoggerInterface.h"

namespace qel::log::analytics::details {

using Table = CipDatabaseClientInterface::Table;

SendingPass::SendingPass(CipDatabaseClientInterface& database,
                         serverconnection::DbToServerConnectionInterface& connection,
                         LoggerInterface& logger, std::size_t packageSizeLimit)
    : database_(database),
      connection_(connection),
      logger_(logger),
      packageSizeLimit_(packageSizeLimit) {}

void SendingPass::run() {
  const auto environments = database_.getAll(Table::Environments).second;
  const auto items = database_.getAll(Table::Items).second;
  if (send(Table::Environments, environments) == Outcome::Accepted &&
      send(Table::Items, items) == Outcome::Accepted) {
    database_.vacuum();
  }
}

SendingPass::Outcome SendingPass::send(Table table,
                                       const CipDatabaseClientInterface::RowMap& rows) {
  PackageBatch batch(packageSizeLimit_);
  for (const auto& [id, json] : rows) {
    batch.add(id, json);
    if (batch.isFull() && send(table, batch) == Outcome::Refused) {
      return Outcome::Refused;
    }
  }
  return batch.ids().empty() ? Outcome::Accepted : send(table, batch);
}

SendingPass::Outcome SendingPass::send(Table table, PackageBatch& batch) {
  items::ItemWrapper package(batch.texts(), table);
  if (!connection_.send(package)) {
    logger_.log(Level::Warning,
                "sending CIP data has not succeeded. Json sent: " + package.toJson());
    return Outcome::Refused;
  }
  database_.deleteByIds(table, batch.ids());
  batch.clear();
  return Outcome::Accepted;
}

}  // namespace qel::log::analytics::details
