#include "tools/sample-host/SampleHost.h"

#include <memory>
#include <utility>
#include <variant>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabaseClient.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Database/SupportDatabaseClient.h"
#include "Application/Log/Analytics/Listeners/PlainIssueInformation.h"
#include "Application/Log/Analytics/SystemEnvironment/ThisMachine.h"
#include "host/QelAssert/Assert.h"
#include "host/QelHttp/Settings.h"
#include "host/QelLog/LogManager.h"
#include "host/QelNotification/IssueStorageBroadcaster.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/ScopeGuard.h"
#include "tools/common/SampleHostFileNames.h"
#include "tools/sample-host/InstallationId.h"
#include "tools/sample-host/Interruption.h"

namespace qel::samplehost {
namespace {

using log::LogManager;
using log::analytics::CipDatabaseClient;
using log::analytics::CipDatabases;
using log::analytics::Client;
using log::analytics::SupportDatabaseClient;

template <typename... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};
template <typename... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

void setUpLog(const std::filesystem::path& directory) {
  log::LogSettings settings;
  settings.file = directory / tools::sampleHostLog;
  LogManager::instance().configure(settings);
  assert::AssertFunctionOne::registerHandler([](const assert::AssertInfo& info) {
    LogManager::instance()
        .getLogger("qel.samplehost.assert")
        ->log(log::Error, info.function + " (" + info.file + ":" + std::to_string(info.line) +
                              "): " + info.message);
  });
}

void setUpHttps(const Options& options) {
  protocol::https::Settings settings;
  settings.caBundle = options.caBundle;
  settings.connectFor = options.serverName.empty() ? QEL_ANALYTICS_SERVER_HOST : options.serverName;
  settings.connectTo = options.server;
  protocol::https::setSettings(settings);
}

std::unique_ptr<log::analytics::items::EnvironmentItem> describeMachine() {
  log::analytics::items::details::ApplicationInfo program;
  program.name = "qel-sample-host";
  program.version = QEL_VERSION;
  program.exeVersion = QEL_VERSION;
#ifdef NDEBUG
  program.exeConfig = "Release";
#else
  program.exeConfig = "Debug";
#endif
  return log::analytics::systemenvironment::describeThisMachine(std::move(program));
}

}  // namespace

SessionSummary SampleHost::play(const std::vector<Step>& script) {
  SessionSummary summary;
  summary.sessionId = options_.sessionId.toString(false);
  // Must come first, because it claims the directory (locks it for this process) or throws.
  summary.before = countStoredRows(options_.directory, options_.sessionId);
  setUpLog(options_.directory);
  setUpHttps(options_);
  playWithClient(script, summary);
  summary.after = countStoredRows(options_.directory, options_.sessionId);
  summary.handedForSending = sendingTraffic_.handedIn;
  summary.handedForSupport = supportTraffic_.handedIn;
  summary.sent = sendingTraffic_.deletedById;
  return summary;
}

log::analytics::serverconnection::ConnectionCheck SampleHost::checkConnection() {
  LogManager::instance().configure({.standardError = false, .file = {}});
  setUpHttps(options_);
  return log::analytics::serverconnection::tryConnection(activateParameter());
}

void SampleHost::playWithClient(const std::vector<Step>& script, SessionSummary& summary) {
  auto pair = std::make_unique<CipDatabases>(
      std::make_unique<CountingDatabaseClient<CipDatabaseClient>>(sendingTraffic_),
      std::make_unique<CountingDatabaseClient<SupportDatabaseClient>>(supportTraffic_,
                                                                      options_.retention));
  auto& databases = *pair;
  Client client(std::move(pair));
  activateAndPlay(script, client, databases, summary);
  summary.interrupted = isInterrupted();
  databases.join();
  // Otherwise rows that the client adds while it is destroyed would be stored after the last
  // sending pass.
  storing_ = false;
  summary.storageEnded = databases.errorOccurred();
}

/// The exit deadline is set when it returns or throws, or at an interruption.
void SampleHost::activateAndPlay(const std::vector<Step>& script, Client& client,
                                 CipDatabases& databases, SessionSummary& summary) {
  const ScopeGuard armExitDeadline(
      [this] { setExitDeadlineUnlessInterrupted(options_.exitDeadline); });
  auto parameter = activateParameter();
  if (parameter.installationId.empty()) {
    parameter.installationId = installationIdOf(options_.directory);
  }
  client.activate(parameter);
  client.registerIssueListStorageListener(
      notification::IssueStorageBroadcaster::getInstance(),
      std::make_unique<log::analytics::PlainIssueInformation>());
  for (const auto& step : script) {
    if (isInterrupted()) {
      break;
    }
    try {
      perform(step, client, databases, summary);
    } catch (const std::exception& failure) {
      throw qel::exception("line " + std::to_string(step.line) + ": " + failure.what());
    }
  }
}

void SampleHost::perform(const Step& step, Client& client, CipDatabases& databases,
                         SessionSummary& summary) {
  std::visit(Overloaded{
                 [&](const Broadcast& broadcast) {
                   broadcast();
                   ++summary.broadcast;
                 },
                 [&](const Wait& wait) { waitUnlessInterrupted(wait.time / options_.speed); },
                 [&](const Join&) { databases.join(); },
                 [&](const StartSending&) { client.startSendingItems(); },
                 [&](const StopSending&) { client.stopSendingItems(); },
                 [&](const WebUpdate& update) { webUpdates_.set(update); },
             },
             step.action);
}

log::analytics::parameters::ActivateParameter SampleHost::activateParameter() {
  return {
      .webUpdateReporter = webUpdates_,
      .databasePath = utilities::utf8FromPath(options_.directory),
      .installationId = options_.installationId,
      .sessionId = options_.sessionId,
      .serverSecret = options_.secret,
      .serverUser = options_.user,
      .createEnvironmentItem = describeMachine,
      .isSendingAllowed = [this] { return storing_ && options_.sendingAllowed; },
      .databaseCallback = [this] { return storing_ && options_.supportAllowed; },
      .serverHost = options_.serverName,
  };
}

}  // namespace qel::samplehost
