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

/// What the host tells the client when it activates it. The two permissions are asked on threads of
/// the client and of the host, must be safe for that, must not call back into the client and must
/// not throw: that would end storage for good.
struct QEL_ANALYTICS_EXPORT ActivateParameter {
  /// Outlives the client.
  reports::WebUpdateReporterInterface& webUpdateReporter;
  /// Directory of both databases (UTF-8); it must exist and belongs to one process at a time.
  std::string databasePath;
  /// Which installation this is, and which run of the program. Both stick to the process: of each,
  /// only the first value counts that is not empty (not null).
  /// @{
  std::string installationId;
  qel::Guid sessionId;
  /// @}
  /// Basic authentication of every package, none if both are empty. The user must hold no colon;
  /// the secret is never written anywhere.
  /// @{
  std::string serverSecret;
  std::string serverUser;
  /// @}
  /// Describes the machine when sending starts, or once at activation when sending is not allowed.
  /// It may be empty or return null: nothing is described then. Called on the client's thread; what
  /// it throws leaves `activate` or `startSendingItems`, with the client active.
  std::function<std::unique_ptr<items::EnvironmentItem>()> createEnvironmentItem;
  /// Whether items may be stored for sending, asked for every batch. Sending starts at activation
  /// if it says so then. Required.
  std::function<bool()> isSendingAllowed;
  /// Whether items may be copied to the support database, asked for every batch. Required.
  std::function<bool()> databaseCallback;
};

}  // namespace parameters

}  // namespace qel::log::analytics
