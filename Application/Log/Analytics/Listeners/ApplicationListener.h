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

/// Records the start, the stop, crashes and failed assertions of the application. A start also
/// records the results of web updates. A crash also records the memory usage before the crash.
class QEL_ANALYTICS_EXPORT ApplicationListener
    : public qel::broadcaster::ApplicationListenerInterface {
 public:
  /// The databases and the web-update reporter must outlive the listener.
  ApplicationListener(CipDatabases& databases,
                      std::shared_ptr<reports::MemoryUsageReporterInterface> memoryUsageReporter,
                      reports::WebUpdateReporterInterface& webUpdateReporter);

  /// Records the start, a request to the server for the user's location, and the results of web
  /// updates if there are any, in this order. Then discards the results of web updates.
  void onApplicationStarted(const qel::broadcaster::event::ApplicationStartEvent& event) override;
  /// Records the stop with the exception code 0, as for a start.
  void onApplicationStopped(const qel::broadcaster::event::ApplicationStopEvent& event) override;
  /// Records the crash with its code, then the memory usage of the process and of the system.
  void onApplicationCrashed(const qel::broadcaster::event::ApplicationCrashEvent& event) override;
  /// Records the assertion with all known facts.
  void onApplicationAsserted(const qel::broadcaster::event::ApplicationAssertEvent& event) override;

 private:
  CipDatabases& databases_;
  const std::shared_ptr<reports::MemoryUsageReporterInterface> memoryUsageReporter_;
  reports::WebUpdateReporterInterface& webUpdateReporter_;
};

}  // namespace qel::log::analytics::listeners
