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
/// The two permission functions, `isSendingAllowed` and `databaseCallback`, are called on threads
/// of the client and of the host. They must be thread-safe, must not call the client, and must not
/// throw. An exception from one of them ends storage for good.
struct QEL_ANALYTICS_EXPORT ActivateParameter {
  /// Must outlive the client.
  reports::WebUpdateReporterInterface& webUpdateReporter;
  /// Directory of both databases (UTF-8). It must exist. Only one process at a time can use it.
  std::string databasePath;
  /// Identify the installation and the run of the program. Each can be set only once per process:
  /// the first non-empty (non-null) value is kept.
  /// @{
  std::string installationId;
  qel::Guid sessionId;
  /// @}
  /// The credentials for Basic authentication with every package. If both are empty, no
  /// authentication is used. The user must not contain a colon. The secret is never logged or
  /// stored.
  /// @{
  std::string serverSecret;
  std::string serverUser;
  /// @}
  /// Describes the machine. `activate` calls the function once. If sending is not allowed at that
  /// time, the first `startSendingItems` calls it again. If the function is empty or returns null,
  /// no environment is stored. An exception propagates out of `activate` or `startSendingItems`,
  /// and the client stays active.
  std::function<std::unique_ptr<items::EnvironmentItem>()> createEnvironmentItem;
  /// Whether items may be stored for sending. Called for every batch. If it returns true during
  /// activation, sending starts. Must be set.
  std::function<bool()> isSendingAllowed;
  /// Whether items may be copied to the support database. Called for every batch. Must be set.
  std::function<bool()> databaseCallback;
  /// The host name of the server, as in its certificate, such as "analytics.example.org". If empty,
  /// the name that was compiled in. Not an address, because not every system can check a
  /// certificate against one.
  std::string serverHost = {};
};

}  // namespace parameters

}  // namespace qel::log::analytics
