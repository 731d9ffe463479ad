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

  /// Records the start, then asks the server for the user's location, then tells the web updates if
  /// there were any, whose information is then discarded.
  void onApplicationStarted(const qel::broadcaster::event::ApplicationStartEvent& event) override;
  /// With the exception code 0, as a start.
  void onApplicationStopped(const qel::broadcaster::event::ApplicationStopEvent& event) override;
  /// Records the crash with its code, then has the process's and the system's memory use reported.
  void onApplicationCrashed(const qel::broadcaster::event::ApplicationCrashEvent& event) override;
  /// Records what is known of the assertion.
  void onApplicationAsserted(const qel::broadcaster::event::ApplicationAssertEvent& event) override;

 private:
  CipDatabases& databases_;
  const std::shared_ptr<reports::MemoryUsageReporterInterface> memoryUsageReporter_;
  reports::WebUpdateReporterInterface& webUpdateReporter_;
};

}  // namespace qel::log::analytics::listeners
