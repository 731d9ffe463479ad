#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "Application/Log/Analytics/ServerConnection/ConnectionCheck.h"
#include "tools/sample-host/CountingDatabaseClient.h"
#include "tools/sample-host/Options.h"
#include "tools/sample-host/ScriptedWebUpdates.h"
#include "tools/sample-host/SessionScript.h"
#include "tools/sample-host/SessionSummary.h"

namespace qel::log::analytics {
class CipDatabases;
class Client;
namespace parameters {
struct ActivateParameter;
}
}  // namespace qel::log::analytics

namespace qel::samplehost {

/// Simulates the CAD program: sets up the host framework, owns an analytics client for one session
/// and broadcasts the notifications of its script. A process may have only one object, which only
/// one thread may use.
class SampleHost {
 public:
  explicit SampleHost(Options options) : options_(std::move(options)) {}

  /// Plays the script and waits until all rows are stored. Sends rows until the exit deadline.
  /// Throws `qel::exception` if the directory cannot be used. Also throws it if a step fails; the
  /// message then names the line of the script.
  SessionSummary play(const std::vector<Step>& script);

  /// Finds out whether rows could be sent. Does not use the directory.
  log::analytics::serverconnection::ConnectionCheck checkConnection();

 private:
  void playWithClient(const std::vector<Step>& script, SessionSummary& summary);
  void activateAndPlay(const std::vector<Step>& script, log::analytics::Client& client,
                       log::analytics::CipDatabases& databases, SessionSummary& summary);
  void perform(const Step& step, log::analytics::Client& client,
               log::analytics::CipDatabases& databases, SessionSummary& summary);
  log::analytics::parameters::ActivateParameter activateParameter();

  const Options options_;
  RowTraffic sendingTraffic_;
  RowTraffic supportTraffic_;
  ScriptedWebUpdates webUpdates_;
  std::atomic<bool> storing_{true};  ///< true until the session's last row is stored
};

}  // namespace qel::samplehost
