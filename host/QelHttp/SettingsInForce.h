#pragma once

#include <memory>
#include <string>

#include "host/QelHttp/Settings.h"

namespace qel::protocol::https {

/// The last settings. Every call of `setSettings` makes a new object, so two exchanges have the
/// same settings exactly if their pointers are equal. Any thread.
std::shared_ptr<const Settings> settingsInForce();

/// Whether connections for a host go to `Settings::connectTo`.
inline bool connectsElsewhere(const Settings& settings, const std::string& host) {
  return !settings.connectTo.empty() && settings.connectFor == host;
}

}  // namespace qel::protocol::https
