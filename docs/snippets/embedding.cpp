#include <chrono>
#include <memory>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "docs/snippets/Program.h"
#include "host/QelUtilities/ExitDeadline.h"

using namespace qel::log::analytics;
using namespace std::chrono_literals;

void runWithAnalytics(Program& program) {
  auto pair = std::make_unique<CipDatabases>(
      std::make_unique<CipDatabaseClient>(),           // rows that wait to be sent
      std::make_unique<SupportDatabaseClient>(720h));  // a copy for support, kept for a month
  CipDatabases& databases = *pair;
  Client client(std::move(pair));
  client.activate({.webUpdateReporter = program.webUpdates(),
                   .databasePath = program.dataDirectory(),
                   .installationId = program.installationId(),
                   .sessionId = qel::Guid::create(),
                   .serverSecret = program.serverSecret(),
                   .serverUser = program.serverUser(),
                   .createEnvironmentItem = [&] { return program.describeMachine(); },
                   .isSendingAllowed = [&] { return program.customerTakesPart(); },
                   .databaseCallback = [&] { return program.supportCopyAllowed(); }});
  program.run();                        // broadcasts its events as before
  qel::utilities::setExitDeadline(5s);  // no exit waits longer for a disk or the network
  databases.join();                     // writes what is still queued
}  // the client's destructor makes one last sending pass
