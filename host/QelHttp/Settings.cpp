#include "host/QelHttp/Settings.h"

#include <mutex>

#include "host/QelHttp/SettingsInForce.h"

namespace qel::protocol::https {
namespace {

struct ProcessState {
  std::mutex settingsMutex;
  std::shared_ptr<const Settings> settings =
      std::make_shared<const Settings>();  ///< guarded by settingsMutex
};

ProcessState& processState() {
  // Never destroyed: worker threads may still post while the process exits.
  static auto* const state = new ProcessState;
  return *state;
}

}  // namespace

void setSettings(const Settings& settings) {
  auto replacement = std::make_shared<const Settings>(settings);
  auto& state = processState();
  const std::lock_guard lock(state.settingsMutex);
  state.settings.swap(replacement);
}

Settings getSettings() { return *settingsInForce(); }

std::shared_ptr<const Settings> settingsInForce() {
  auto& state = processState();
  const std::lock_guard lock(state.settingsMutex);
  return state.settings;
}

}  // namespace qel::protocol::https
