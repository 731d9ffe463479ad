#include "Application/Log/Analytics/Client/Client.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <utility>

#include "Application/Log/Analytics/Client/SendingPass.h"
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
#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/Debugger.h"
#include "host/QelUtilities/Exception.h"
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

void reportFailedPass(CipDatabases& databases, LoggerInterface& logger,
                      const std::string& message) {
  logger.log(Level::Error, "sending CIP data has failed: " + message);
  databases.insert(
      std::make_unique<items::CipInfoItem>(items::CipInfoItem::Area::SendingItems,
                                           items::CipInfoItem::Severity::Exception, message),
      CipDatabaseClientInterface::Items);
  utilities::debugger::Debugger::vBreak();
}

}  // namespace

Client::Client(std::unique_ptr<CipDatabases> databases) : databases_(std::move(databases)) {
  if (!databases_) {
    throw std::invalid_argument("databases can not be assigned nullptr");
  }
  memoryUsageObserver_ = std::make_shared<reports::MemoryUsageObserver>(*databases_);
  serverConnection_ = std::make_shared<serverconnection::DbToServerConnection>();
  logger_ = LogManager::instance().getLogger("qel.log.analytics.Client");
}

Client::~Client() {
  releaseDeadline_.arm(longestRelease);
  memoryUsageObserver_.reset();
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
  if (active_) {
    throw qel::exception("Customer involvement client is already running.");
  }
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

void Client::stopSendingItems() { sendingLoop_.stop(); }

void Client::initInstances(const parameters::ActivateParameter& parameter) {
  items::BaseItem::setSessionId(parameter.sessionId);
  items::BaseItem::setInstallationId(parameter.installationId);
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
    const utilities::Patience patience(utilities::Patience::unlimited);
    try {
      details::SendingPass(databases_->getCipDatabase(), *serverConnection_, *logger,
                           packageSizeLimit_)
          .run();
      return true;
    } catch (const std::exception& failure) {
      reportFailedPass(*databases_, *logger, failure.what());
      throw std::runtime_error(failure.what());
    } catch (...) {
      reportFailedPass(*databases_, *logger, "Unknown Exception");
      throw;
    }
  };
}

}  // namespace qel::log::analytics
