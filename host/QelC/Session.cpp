#include "host/QelC/Session.h"

#include <cstdint>
#include <utility>

#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/Listeners/PlainIssueInformation.h"
#include "Core/Utilities/Template/Singleton.h"
#include "host/QelC/CallError.h"
#include "host/QelC/Environment.h"
#include "host/QelC/Recordings.h"
#include "host/QelNotification/IssueStorageBroadcaster.h"

namespace qel::c {
namespace {

using namespace log::analytics;

/// A program that uses the C interface reports no web updates.
class NoWebUpdates : public reports::WebUpdateReporterInterface {
 public:
  bool isInformationAvailable() const override { return false; }
  void reset() override {}
  std::uint64_t getSuccessCount() const override { return 0; }
  std::uint64_t getCorruptPackageCount() const override { return 0; }
};

}  // namespace

Session::Session(const Parameters& parameters, const std::string& environment)
    : releaseLimit_(parameters.releaseLimit), callbacks_(parameters.callbacks) {
  protocol::https::setSettings(parameters.https);
  auto databases = std::make_unique<CipDatabases>(
      std::make_unique<LossCountingDatabaseClient<CipDatabaseClient>>(lost_.forSending),
      std::make_unique<LossCountingDatabaseClient<SupportDatabaseClient>>(lost_.forSupport,
                                                                          parameters.retention));
  databases_ = databases.get();
  client_ = std::make_unique<Client>(std::move(databases));
  client_->activate(activation(parameters, environment));
  client_->registerIssueListStorageListener(notification::IssueStorageBroadcaster::getInstance(),
                                            std::make_unique<PlainIssueInformation>());
}

void Session::waitUntilStored() {
  databases_->join();
  expectStorage();
  const auto forSupport = lost_.forSupport.exchange(0);
  const auto forSending = lost_.forSending.exchange(0);
  if (forSupport + forSending > 0) {
    throw CallError(QEL_ANALYTICS_NOT_STORED,
                    "not stored: " + std::to_string(forSupport) + " records for support, " +
                        std::to_string(forSending) + " for sending; see the log");
  }
}

void Session::withdraw() { expectRemoved(client_->withdraw()); }

void Session::expectStorage() const {
  if (databases_->errorOccurred()) {
    throw CallError(QEL_ANALYTICS_STORAGE_ENDED, "recording has ended; the log has the reason");
  }
}

parameters::ActivateParameter Session::activation(const Parameters& parameters,
                                                  const std::string& environment) const {
  return {.webUpdateReporter = singleton<NoWebUpdates>(),
          .databasePath = parameters.directory,
          .installationId = parameters.installationId,
          .sessionId = parameters.sessionId,
          .serverSecret = parameters.serverSecret,
          .serverUser = parameters.serverUser,
          .createEnvironmentItem = [environment] { return readEnvironment(environment); },
          .isSendingAllowed = [callbacks = callbacks_] { return callbacks->isSendingAllowed(); },
          .databaseCallback = [callbacks = callbacks_] { return callbacks->isSupportAllowed(); },
          .serverHost = parameters.serverHost};
}

}  // namespace qel::c
