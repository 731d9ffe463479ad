#include <atomic>

#include "Application/Log/Analytics/Client/Client.h"
#include "Application/Log/Analytics/Database/CipDatabases.h"
#include "host/QelAssert/Assert.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"

using namespace qel::log::analytics;
using namespace qel::broadcaster;

std::atomic<bool> hasConsented{false};  // isSendingAllowed returns it

void onConsent(Client& client, CipDatabases& databases) {
  databases.join();  // what was recorded before the consent is not stored for sending
  hasConsented = true;
  client.startSendingItems();
}

void recordAssertionsOfThisThread() {
  qel::assert::AssertFunctionOne::registerHandler([](const qel::assert::AssertInfo& info) {
    ApplicationBroadcaster::getInstance().notify(
        &ApplicationListenerInterface::onApplicationAsserted,
        event::ApplicationAssertEvent{{"Program 1.0"}, info});
  });
}
