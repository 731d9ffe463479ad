#include "Application/Log/Analytics/Client/Client.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string>
#include <utility>

#include "Application/Log/Analytics/Client/SendingPass.h"
#include "Application/Log/Analytics/Client/SendingState.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "Application/Log/Analytics/Items/BaseItem.h"
#include "Application/Log/Analytics/Items/CipInfoItem.h"
#include "Application/Log/Analytics/Items/EnvironmentItem.h"
#include "Application/Log/Analytics/Listeners/ActionListener.h"
#include "Application/Log/Analytics/Listeners/ApplicationListener.h"
#include "Application/Log/Analytics/Listeners/CommandListener.h"
#include "Application/Log/Analytics/Listeners/GeneralListener.h"
#include "Application/Log/Analytics/Listeners/IssueListStorageListener.h"
#include "Application/Log/Analytics/Listeners/IssueListUserActionListener.h"
#include "Application/Log/Analytics/Listeners/ProjectListener.h"
#include "Application/Log/Analytics/Listeners/SaveListener.h"
#include "Application/Log/Analytics/Reports/MemoryUsageObserver.h"
#include "Application/Log/Analytics/ServerConnection/DbToServerConnection.h"
#include "Application/Log/Analytics/ServerConnection/HostName.h"
#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/Debugger.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/Patience.h"

namespace qel::log::analytics {
namespace {

using namespace qel::broadcaster;
using IssueListUserActionBroadcaster = qel::log::issue::ui::UserActionBroadcaster;
using qel::util::RunPolicy;

constexpr std::chrono::seconds longestRelease{30};

/// Stores a new listener in `listener`, a member of the client, and registers it. An earlier
/// listener in the member is released.
template <typename Broadcaster, typename Listener, typename... Arguments>
void createAndRegister(std::shared_ptr<Listener>& listener, Arguments&&... arguments) {
  listener = std::make_shared<Listener>(std::forward<Arguments>(arguments)...);
  Broadcaster::getInstance().registerListener(listener);
}

template <typename Broadcaster, typename Listener>
void unregister(const std::shared_ptr<Listener>& listener) {
  if (listener) {
    Broadcaster::getInstance().unregisterListener(listener);
  }
}

void reportFailedPass(CipDatabases& databases, details::SendingState& state,
                      LoggerInterface& logger, const std::string& message) {
  state.recordFailure(message);
  logger.log(Level::Error, "sending CIP data has failed: " + message);
  databases.insert(
      std::make_unique<items::CipInfoItem>(items::CipInfoItem::Area::SendingItems,
                                           items::CipInfoItem::Severity::Exception, message),
      CipDatabaseClientInterface::Items);
  utilities::debugger::Debugger::vBreak();
}

}  // namespace

Client::Client(std::unique_ptr<CipDatabases> databases)
    : databases_(std::move(databases)), sendingState_(std::make_unique<details::SendingState>()) {
  if (!databases_) {
    throw std::invalid_argument("databases can not be assigned nullptr");
  }
  memoryUsageObserver_ = std::make_shared<reports::MemoryUsageObserver>(*databases_);
  serverConnection_ = std::make_shared<serverconnection::DbToServerConnection>();
  logger_ = LogManager::instance().getLogger("qel.log.analytics.Client");
}

Client::~Client() {
  releaseDeadline_.arm(longestRelease);
  memoryUsageObserver_.reset();  // the application's listener shares it
  unregister<ActionBroadcaster>(actionListener_);
  unregister<ApplicationBroadcaster>(applicationListener_);
  unregister<CommandBroadcaster>(commandListener_);
  unregister<ProjectBroadcaster>(projectListener_);
  unregister<IssueListUserActionBroadcaster>(issueListUserActionListener_);
  unregister<CollisionUserActionBroadcaster>(issueListUserActionListener_);
  unregister<SaveBroadcaster>(saveListener_);
  unregister<GeneralBroadcaster>(generalListener_);
}

void Client::activate(const parameters::ActivateParameter& parameter) {
  if (sendingState_->hasEnded()) {
    throw qel::exception("Customer involvement client has ended.");
  }
  if (active_) {
    throw qel::exception("Customer involvement client is already running.");
  }
  serverconnection::requireHostName(parameter.serverHost);
  createEnvironmentItem_ = parameter.createEnvironmentItem;
  initInstances(parameter);
  initAndRegisterActionListener();
  createAndRegister<ApplicationBroadcaster>(applicationListener_, *databases_, memoryUsageObserver_,
                                            parameter.webUpdateReporter);
  createAndRegister<CommandBroadcaster>(commandListener_, *databases_);
  createAndRegister<ProjectBroadcaster>(projectListener_, *databases_);
  createAndRegister<IssueListUserActionBroadcaster>(issueListUserActionListener_, *databases_);
  CollisionUserActionBroadcaster::getInstance().registerListener(issueListUserActionListener_);
  createAndRegister<SaveBroadcaster>(saveListener_, *databases_);
  createAndRegister<GeneralBroadcaster>(generalListener_, *databases_);
  active_ = true;
  memoryUsageObserver_->start();
  if (databases_->getWriteToCipDatabaseFunc()) {
    startSendingItems();
  } else {
    insertEnvironmentItem();
  }
}

void Client::registerIssueListStorageListener(
    qel::Broadcaster<qel::log::issue::StorageListenerInterface>& broadcaster,
    std::unique_ptr<IssueListInformationInterface> information) {
  issueListStorageListener_ =
      std::make_shared<listeners::IssueListStorageListener>(*databases_, std::move(information));
  broadcaster.registerListener(issueListStorageListener_);
}

void Client::startSendingItems() {
  if (sendingState_->hasEnded()) {
    return;
  }
  if (!sendingStarted_) {
    sendingStarted_ = true;
    if (startupTask_.valid()) {
      startupTask_.wait();
    }
    insertEnvironmentItem();
  }
  sendingLoop_.perform({}, sendItemsFunc(), std::chrono::minutes(10),
                       RunPolicy{RunPolicy::AtStartAndStop, true});
}

void Client::stopSendingItems() {
  if (!sendingState_->hasEnded()) {
    sendingLoop_.stop();
  }
}

void Client::endSending() { sendingState_->end(); }

/// Keeps the listeners registered, because other threads may be calling them. The closed databases
/// drop what they record.
std::vector<RemovedFile> Client::withdraw(const HostFileFilter& isHostFile) {
  if (!directory_) {
    throw qel::exception("Customer involvement client was never activated.");
  }
  if (isRemoved_) {
    return {};
  }
  endSending();
  memoryUsageObserver_->stop();
  sendingLoop_.stopAndJoin();
  databases_->close();
  auto removed = removeRecordings(utilities::pathFromUtf8(*directory_), isHostFile);
  isRemoved_ = std::ranges::none_of(removed, [](const auto& file) { return bool(file.error); });
  return removed;
}

SendingStatus Client::sendingStatus() const {
  auto status = sendingState_->status();
  status.isLoopRunning = sendingLoop_.isRunning();
  return status;
}

void Client::initInstances(const parameters::ActivateParameter& parameter) {
  items::BaseItem::setSessionId(parameter.sessionId);
  items::BaseItem::setInstallationId(parameter.installationId);
  directory_ = parameter.databasePath;
  databases_->initialize(parameter);
  serverConnection_->initalize(parameter);
}

void Client::initAndRegisterActionListener() {
  createAndRegister<ActionBroadcaster>(actionListener_, *databases_);
}

void Client::insertEnvironmentItem() {
  if (!createEnvironmentItem_) {
    return;
  }
  if (auto item = createEnvironmentItem_()) {
    databases_->insert(std::move(item), CipDatabaseClientInterface::Environments);
  }
}

/// The returned function shares ownership of the logger, because the client releases its own
/// reference before the last pass.
std::function<bool()> Client::sendItemsFunc() {
  return [this, logger = logger_] {
    auto& state = *sendingState_;
    if (state.hasEnded()) {
      return true;
    }
    const utilities::Patience patience(utilities::Patience::unlimited, state.stopTime());
    try {
      details::SendingPass pass(databases_->getCipDatabase(), *serverConnection_, *logger, state,
                                packageSizeLimit_);
      if (!pass.run()) {
        state.recordFailure("the server answered with status " +
                            std::to_string(serverConnection_->lastStatus()));
      }
      return true;
    } catch (const std::exception& failure) {
      if (state.hasEnded()) {
        return true;
      }
      reportFailedPass(*databases_, state, *logger, failure.what());
      throw std::runtime_error(failure.what());
    } catch (...) {
      if (state.hasEnded()) {
        return true;
      }
      reportFailedPass(*databases_, state, *logger, "Unknown Exception");
      throw;
    }
  };
}

}  // namespace qel::log::analytics
