#pragma once

#include <memory>
#include <string>

#include "host/QelHttp/Settings.h"

namespace qel::protocol::https {

/// What `setSettings` set last. Every call of it makes an object of its own, so that two exchanges
/// ran under the same settings exactly when their pointers are equal. Any thread.
std::shared_ptr<const Settings> settingsInForce();

/// Whether connections for a host go to `Settings::connectTo`.
inline bool connectsElsewhere(const Settings& settings, const std::string& host) {
  return !settings.connectTo.empty() && settings.connectFor == host;
}

}  // namespace qel::protocol::https
