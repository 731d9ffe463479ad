#include "host/QelHttp/Settings.h"

#include "host/QelHttp/SettingsInForce.h"
#include "host/QelUtilities/Mutex.h"

namespace qel::protocol::https {
namespace {

struct ProcessState {
  utilities::Mutex mutex;
  std::shared_ptr<const Settings> settings QEL_GUARDED_BY(mutex) =
      std::make_shared<const Settings>();
};

ProcessState& processState() {
  // Never destroyed, because worker threads may still post while the process exits.
  static auto* const state = new ProcessState;
  return *state;
}

}  // namespace

void setSettings(const Settings& settings) {
  auto replacement = std::make_shared<const Settings>(settings);
  auto& state = processState();
  const utilities::MutexLock lock(state.mutex);
  state.settings.swap(replacement);
}

Settings getSettings() { return *settingsInForce(); }

std::shared_ptr<const Settings> settingsInForce() {
  auto& state = processState();
  const utilities::MutexLock lock(state.mutex);
  return state.settings;
}

}  // namespace qel::protocol::https
