#include "host/QelHttp/Settings.h"
#include "host/QelSql/SqlDatabaseAdapter.h"
#include "tests/support/Session.h"

/// Creates a support database whose old rows take seconds to delete.
static void createOldRows(const std::string& directory) {
  qel::log::analytics::SupportDatabaseClient({}).initialize(directory);
  qel::db::sql::SqlDatabaseAdapter(std::filesystem::path(directory) / "SupportDatabase.db")
      .execute(
          "INSERT INTO Items(json, timestamp_utc) WITH RECURSIVE n(i) AS "
          "(SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 300000) SELECT i, '2000-01-01' FROM "
          "n");
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
