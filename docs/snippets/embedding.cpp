#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/Database/SupportDatabaseExporter.h"
#include "docs/snippets/Program.h"
#include "host/QelId/Guid.h"
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

/// Stores the rows of each table in one transaction. One by one, thousands of rows take a minute.
class SessionCopy : public SupportDatabaseClient {
 public:
  SessionCopy() : SupportDatabaseClient(std::nullopt) {}

  using SupportDatabaseClient::insertMultiple;
  void insertMultiple(const std::vector<std::string>& texts, Table table) override {
    std::vector<std::pair<std::string, Table>> rows;
    for (const auto& text : texts) {
      rows.emplace_back(text, table);
    }
    SupportDatabaseClient::insertMultiple(rows);
  }
};

/// Copies a session of the data directory into a new database in an empty folder.
bool exportSession(CipDatabases& databases, const std::string& dataDirectory,
                   const qel::Guid& session, const std::string& folder) {
  databases.join();  // stores what is still queued
  const auto source = std::make_shared<SupportDatabaseClient>(std::nullopt);
  const auto copy = std::make_shared<SessionCopy>();
  source->initialize(dataDirectory);
  copy->initialize(folder);
  return SupportDatabaseExporter(source).exportLastSessionToSqliteFile(session.toString(false),
                                                                       copy);
}
