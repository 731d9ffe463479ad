#include "host/QelHttp/Settings.h"
#include "tests/faults/OldRows.h"
#include "tests/faults/Session.h"

/// A part of a host that is loaded for one session and unloaded while old rows are still being
/// deleted. Returns how many rows the session has left to be sent.
extern "C" int runSession(const char* directory) {
  qel::protocol::https::Settings settings;
  settings.connectFor = "analytics.qel.example";
  settings.connectTo = "127.0.0.1:1";  // where nobody listens
  qel::protocol::https::setSettings(settings);
  qel::test::makeOldRows(directory);
  const qel::test::Session session(directory, std::chrono::seconds(1));
  session.insert(1);
  session.databases.join();
  return static_cast<int>(session.databases.getCipDatabase().getAllItems().size());
}
