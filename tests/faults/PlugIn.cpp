#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"
#include "host/QelHttp/Settings.h"
#include "tests/faults/OldRows.h"
#include "tests/support/MemoryStorage.h"

/// A part of a host that is loaded for one session and unloaded while old rows are still being
/// deleted. Returns how many rows the session has left to be sent.
extern "C" int runSession(const char* directory) {
  using namespace qel;
  using namespace qel::log::analytics;
  protocol::https::Settings settings;
  settings.connectFor = "analytics.qel.example";
  settings.connectTo = "127.0.0.1:1";  // where nobody listens
  protocol::https::setSettings(settings);
  test::makeOldRows(directory);
  test::FakeWebUpdateReporter webUpdateReporter;
  auto owned = std::make_unique<CipDatabases>(
      std::make_unique<CipDatabaseClient>(),
      std::make_unique<SupportDatabaseClient>(std::chrono::seconds(1)));
  auto& databases = *owned;
  Client client(std::move(owned));
  client.activate({.webUpdateReporter = webUpdateReporter,
                   .databasePath = directory,
                   .installationId = "installation",
                   .sessionId = Guid::create(),
                   .serverSecret = {},
                   .serverUser = {},
                   .createEnvironmentItem = {},
                   .isSendingAllowed = [] { return true; },
                   .databaseCallback = [] { return true; }});
  broadcaster::ActionBroadcaster::getInstance().notify(
      &broadcaster::ActionListenerInterface::onHelpAction,
      broadcaster::event::HelpActionEvent{{"help", {}}});
  databases.join();
  return static_cast<int>(databases.getCipDatabase().getAllItems().size());
}
