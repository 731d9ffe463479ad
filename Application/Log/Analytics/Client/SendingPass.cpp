#include "Application/Log/Analytics/Client/SendingPass.h"

#include <chrono>
#include <string>

#include "Application/Log/Analytics/Client/PackageBatch.h"
#include "Application/Log/Analytics/Client/SendingState.h"
#include "Application/Log/Analytics/Items/ItemWrapper.h"
#include "Application/Log/Analytics/ServerConnection/DbToServerConnectionInterface.h"
#include "host/QelLog/LoggerInterface.h"

namespace qel::log::analytics::details {

using std::chrono::steady_clock;
using Table = CipDatabaseClientInterface::Table;

SendingPass::SendingPass(CipDatabaseClientInterface& database,
                         serverconnection::DbToServerConnectionInterface& connection,
                         LoggerInterface& logger, SendingState& state, std::size_t packageSizeLimit)
    : database_(database),
      connection_(connection),
      logger_(logger),
      state_(state),
      packageSizeLimit_(packageSizeLimit) {}

bool SendingPass::run() {
  const auto environments = database_.getAll(Table::Environments).second;
  const auto items = database_.getAll(Table::Items).second;
  auto outcome = send(Table::Environments, environments);
  if (outcome == Outcome::Accepted) {
    outcome = send(Table::Items, items);
  }
  if (outcome == Outcome::Accepted) {
    database_.vacuum();
  }
  return outcome != Outcome::Refused;
}

SendingPass::Outcome SendingPass::send(Table table,
                                       const CipDatabaseClientInterface::RowMap& rows) {
  PackageBatch batch(packageSizeLimit_);
  for (const auto& [id, json] : rows) {
    batch.add(id, json);
    if (!batch.isFull()) {
      continue;
    }
    if (const auto outcome = send(table, batch); outcome != Outcome::Accepted) {
      return outcome;
    }
  }
  return batch.ids().empty() ? Outcome::Accepted : send(table, batch);
}

SendingPass::Outcome SendingPass::send(Table table, PackageBatch& batch) {
  if (state_.hasEnded()) {
    return Outcome::Ended;
  }
  items::ItemWrapper package(batch.texts(), table);
  const auto begin = steady_clock::now();
  const bool isAccepted = connection_.send(package);
  if (state_.hasEnded()) {
    return Outcome::Ended;
  }
  if (!isAccepted) {
    logger_.log(Level::Warning,
                "sending CIP data has not succeeded. Json sent: " + package.toJson());
    return Outcome::Refused;
  }
  database_.deleteByIds(table, batch.ids());
  noteAcceptance(batch, steady_clock::now() - begin);
  batch.clear();
  return Outcome::Accepted;
}

void SendingPass::noteAcceptance(PackageBatch& batch, steady_clock::duration time) {
  const auto rows = batch.ids().size();
  state_.recordAcceptance(rows);
  logger_.log(
      Level::Info,
      "sent " + std::to_string(rows) + " rows, " + std::to_string(batch.size()) + " bytes in " +
          std::to_string(std::chrono::round<std::chrono::milliseconds>(time).count()) + " ms");
}

}  // namespace qel::log::analytics::details
