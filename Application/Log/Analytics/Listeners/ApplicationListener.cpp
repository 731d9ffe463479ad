#include "Application/Log/Analytics/Listeners/ApplicationListener.h"

#include <utility>

#include "Application/Log/Analytics/Items/ApplicationItem.h"
#include "Application/Log/Analytics/Items/UserItems.h"
#include "Application/Log/Analytics/Items/WebUpdateItem.h"
#include "Application/Log/Analytics/Listeners/InsertItem.h"
#include "Application/Log/Analytics/Reports/MemoryUsageReporterInterface.h"
#include "Application/Log/Analytics/Reports/WebUpdateReporterInterface.h"

namespace qel::log::analytics::listeners {

using items::ApplicationItem;
using items::UserLocationItem;
using items::WebUpdateItem;
using namespace qel::broadcaster::event;

namespace {

/// The exception code of a start or a stop.
constexpr int noExceptionCode = 0;

}  // namespace

ApplicationListener::ApplicationListener(
    CipDatabases& databases,
    std::shared_ptr<reports::MemoryUsageReporterInterface> memoryUsageReporter,
    reports::WebUpdateReporterInterface& webUpdateReporter)
    : databases_(databases),
      memoryUsageReporter_(std::move(memoryUsageReporter)),
      webUpdateReporter_(webUpdateReporter) {}

void ApplicationListener::onApplicationStarted(const ApplicationStartEvent& event) {
  insertItem(databases_, std::make_unique<ApplicationItem>(
                             event.text, ApplicationItem::Type::Started, noExceptionCode));
  insertItem(databases_, std::make_unique<UserLocationItem>());
  if (!webUpdateReporter_.isInformationAvailable()) {
    return;
  }
  const auto success = webUpdateReporter_.getSuccessCount();
  const auto corrupt = webUpdateReporter_.getCorruptPackageCount();
  insertItem(databases_, std::make_unique<WebUpdateItem>(success, corrupt));
  webUpdateReporter_.reset();
}

void ApplicationListener::onApplicationStopped(const ApplicationStopEvent& event) {
  insertItem(databases_, std::make_unique<ApplicationItem>(
                             event.text, ApplicationItem::Type::Stopped, noExceptionCode));
}

void ApplicationListener::onApplicationCrashed(const ApplicationCrashEvent& event) {
  insertItem(databases_, std::make_unique<ApplicationItem>(
                             event.text, ApplicationItem::Type::Crashed, event.code));
  memoryUsageReporter_->reportDetailedMemoryUsageOfCurrentProcessForCrash();
  memoryUsageReporter_->reportDetailedMemoryUsageOfSystemForCrash();
}

void ApplicationListener::onApplicationAsserted(const ApplicationAssertEvent& event) {
  insertItem(databases_, std::make_unique<ApplicationItem>(event.text, event.assertInfo));
}

}  // namespace qel::log::analytics::listeners
