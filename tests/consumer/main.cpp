#include <chrono>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/Items/EnvironmentItem.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelHttp/Settings.h"
#include "host/QelUtilities/ExitDeadline.h"

using namespace qel::log::analytics;
using namespace std::chrono_literals;

namespace {

class NoWebUpdates : public reports::WebUpdateReporterInterface {
 public:
  bool isInformationAvailable() const override { return false; }
  void reset() override {}
  std::uint64_t getSuccessCount() const override { return 0; }
  std::uint64_t getCorruptPackageCount() const override { return 0; }
};

std::string firstLineOf(const char* file) {
  std::string line;
  std::getline(std::ifstream(file), line);
  return line;
}

void broadcastOneEvent(const std::string& directory, const std::string& secret) {
  NoWebUpdates webUpdates;
  auto pair = std::make_unique<CipDatabases>(std::make_unique<CipDatabaseClient>(),
                                             std::make_unique<SupportDatabaseClient>(720h));
  CipDatabases& databases = *pair;
  Client client(std::move(pair));
  client.activate({.webUpdateReporter = webUpdates,
                   .databasePath = directory,
                   .installationId = "consumer",
                   .sessionId = qel::Guid::create(),
                   .serverSecret = secret,
                   .serverUser = "consumer",
                   .createEnvironmentItem = {},
                   .isSendingAllowed = [] { return true; },
                   .databaseCallback = [] { return true; }});
  qel::broadcaster::ActionBroadcaster::getInstance().notify(
      &qel::broadcaster::ActionListenerInterface::onHelpAction,
      qel::broadcaster::event::HelpActionEvent{{"Borrowed", {}}});
  qel::utilities::setExitDeadline(5s);
  databases.join();
}

}  // namespace

/// A host outside the repository: one session with one event, which is uploaded, or kept where the
/// server cannot be reached.
int main(int argc, char** argv) {
  if (argc != 6) {
    std::cerr << "usage: consumer DIRECTORY SERVER-NAME ADDRESS:PORT CA-FILE SECRET-FILE\n";
    return 2;
  }
  qel::protocol::https::Settings settings;
  settings.connectFor = argv[2];
  settings.connectTo = argv[3];
  settings.caBundle = argv[4];
  qel::protocol::https::setSettings(settings);
  broadcastOneEvent(argv[1], firstLineOf(argv[5]));
}
