#pragma once

#include <memory>
#include <string>

#include "host/QelHttp/Settings.h"

namespace qel::protocol::https {

/// The current settings. Every call of `setSettings` creates a new object. So two exchanges have
/// the same settings if and only if their pointers are equal. Thread-safe.
std::shared_ptr<const Settings> settingsInForce();

/// Whether connections to `host` go to `Settings::connectTo` instead.
inline bool connectsElsewhere(const Settings& settings, const std::string& host) {
  return !settings.connectTo.empty() && settings.connectFor == host;
}

}  // namespace qel::protocol::https
