#include "host/QelHttp/Settings.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "tests/support/Session.h"

static void createOldRows(const std::string& directory) {
  qel::log::analytics::SupportDatabaseClient({}).initialize(directory);
  qel::db::sql::SqlDatabaseAdapter(std::filesystem::path(directory) / "SupportDatabase.db")
      .execute(qel::test::insertionOfOldRows);
}

/// A part of a host that is loaded for one session and unloaded while old rows are still being
/// deleted. Returns how many rows the session has left to be sent.
extern "C" int runSession(const char* directory) {
  qel::protocol::https::Settings settings;
  settings.connectFor = "analytics.qel.example";
  settings.connectTo = "127.0.0.1:1";  // where nobody listens
  qel::protocol::https::setSettings(settings);
  createOldRows(directory);
  const qel::test::Session session(directory, std::chrono::seconds(1));
  session.insert(1);
  session.databases.join();
  return static_cast<int>(session.databases.getCipDatabase().getAllItems().size());
}
