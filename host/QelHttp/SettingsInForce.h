#pragma once

#include <chrono>
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

/// When every exchange has to be over; the clock's end while no exit deadline is armed. Any thread.
std::chrono::steady_clock::time_point exitDeadline();

}  // namespace qel::protocol::https
