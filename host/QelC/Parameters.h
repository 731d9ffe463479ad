#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "host/QelC/Callbacks.h"
#include "host/QelC/qel_analytics.h"
#include "host/QelHttp/Settings.h"
#include "host/QelId/Guid.h"
#include "host/QelLog/LogManager.h"

namespace qel::c {

/// The checked settings of a client.
struct Parameters {
  std::string directory;
  std::string installationId;
  Guid sessionId;  ///< null if the caller has set none
  std::string serverUser;
  std::string serverSecret;
  std::string serverHost;  ///< empty if the caller has set none
  std::optional<std::chrono::seconds> retention;
  std::chrono::milliseconds releaseLimit{0};
  protocol::https::Settings https;
  log::LogSettings log;
  std::shared_ptr<Callbacks> callbacks;
};

/// Reads the struct of a caller, whose size may be that of another version. Throws `CallError`,
/// which names the member, if the struct or a member is invalid.
Parameters readParameters(const qel_analytics_parameters* given);

}  // namespace qel::c
