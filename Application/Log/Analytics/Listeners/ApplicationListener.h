#pragma once

#include <memory>

#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/ApplicationBroadcaster.h"

namespace qel::log::analytics {
class CipDatabases;
}
namespace qel::log::analytics::reports {
class MemoryUsageReporterInterface;
class WebUpdateReporterInterface;
}  // namespace qel::log::analytics::reports

namespace qel::log::analytics::listeners {

/// Records the application's start, stop, crash and failed assertions; with a start also what web
/// updates did, with a crash also the memory use that led to it.
class QEL_ANALYTICS_EXPORT ApplicationListener
    : public qel::broadcaster::ApplicationListenerInterface {
 public:
  /// The databases and the web-update reporter outlive the listener.
  ApplicationListener(CipDatabases& databases,
                      std::shared_ptr<reports::MemoryUsageReporterInterface> memoryUsageReporter,
                      reports::WebUpdateReporterInterface& webUpdateReporter);

  void onApplicationStarted(const qel::broadcaster::event::ApplicationStartEvent& event) override;
  void onApplicationStopped(const qel::broadcaster::event::ApplicationStopEvent& event) override;
  void onApplicationCrashed(const qel::broadcaster::event::ApplicationCrashEvent& event) override;
  void onApplicationAsserted(const qel::broadcaster::event::ApplicationAssertEvent& event) override;

 private:
  CipDatabases& databases_;
  const std::shared_ptr<reports::MemoryUsageReporterInterface> memoryUsageReporter_;
  reports::WebUpdateReporterInterface& webUpdateReporter_;
};

}  // namespace qel::log::analytics::listeners
