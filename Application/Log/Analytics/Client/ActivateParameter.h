#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Application/Log/Analytics/Reports/WebUpdateReporterInterface.h"
#include "QelAnalyticsExport.h"
#include "host/QelId/Guid.h"

namespace qel::log::analytics {

namespace items {
class EnvironmentItem;
}

namespace parameters {

/// The settings with which a host activates the client.
///
/// The two permission functions are called on threads of the client and of the host. They must be
/// thread-safe, must not call the client, and must not throw. An exception ends storage for good.
struct QEL_ANALYTICS_EXPORT ActivateParameter {
  /// Must outlive the client.
  reports::WebUpdateReporterInterface& webUpdateReporter;
  /// Directory of both databases (UTF-8). It must exist. Only one process at a time can use it.
  std::string databasePath;
  /// Identify the installation and the run of the program. Both are set once per process: the first
  /// value that is not empty (not null) is kept.
  /// @{
  std::string installationId;
  qel::Guid sessionId;
  /// @}
  /// Basic authentication for every package, none if both are empty. The user must not contain a
  /// colon. The secret is never written anywhere.
  /// @{
  std::string serverSecret;
  std::string serverUser;
  /// @}
  /// Describes the machine. Called on the client's thread when sending starts, or once at
  /// activation when sending is not allowed. May be empty or return null: nothing is stored then.
  /// An exception leaves `activate` or `startSendingItems`, and the client stays active.
  std::function<std::unique_ptr<items::EnvironmentItem>()> createEnvironmentItem;
  /// Whether items may be stored for sending. Called for every batch. Sending starts at activation
  /// if the result is true then. Required.
  std::function<bool()> isSendingAllowed;
  /// Whether items may be copied to the support database. Called for every batch. Required.
  std::function<bool()> databaseCallback;
};

}  // namespace parameters

}  // namespace qel::log::analytics
