#include <chrono>
#include <cstdint>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/Items/EnvironmentItem.h"
#include "host/QelBroadcaster/GeneralBroadcaster.h"
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

class LicenseBorrowed : public qel::broadcaster::GeneralEventInterface {
 public:
  std::string getCategory() const override { return "License"; }
  std::string getSubCategory() const override { return "Network"; }
  std::string getEvent() const override { return "Borrowed"; }
  std::map<std::string, std::string> getDetails() const override { return {{"Days", "14"}}; }
};

std::unique_ptr<items::EnvironmentItem> describeMachine() {
  items::details::ApplicationInfo consumer;
  consumer.name = "Consumer";
  consumer.version = "1.0";
  return std::make_unique<items::EnvironmentItem>(
      items::details::OsEnvironmentInfo("Debian 12", "64", "en", "", false, "1920x1080", 96, ""),
      items::details::HardwareEnvironmentInfo(),
      std::vector{items::details::QelEnvironmentInfo(consumer, true, "", {}, {}, {})}, false);
}

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
                   .createEnvironmentItem = describeMachine,
                   .isSendingAllowed = [] { return true; },
                   .databaseCallback = [] { return true; }});
  qel::broadcaster::GeneralBroadcaster::getInstance().notify(
      &qel::broadcaster::GeneralListenerInterface::onGeneralAction,
      std::make_shared<const LicenseBorrowed>());
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
  try {
    qel::protocol::https::Settings settings;
    settings.connectFor = argv[2];
    settings.connectTo = argv[3];
    settings.caBundle = argv[4];
    qel::protocol::https::setSettings(settings);
    broadcastOneEvent(argv[1], firstLineOf(argv[5]));
  } catch (const std::exception& failure) {
    std::cerr << "consumer: " << failure.what() << '\n';
    return 1;
  }
}
