#include "host/QelHttp/Settings.h"

#include <algorithm>
#include <atomic>
#include <mutex>

#include "host/QelHttp/SettingsInForce.h"

namespace qel::protocol::https {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

struct ProcessState {
  std::atomic<steady_clock::time_point> exitDeadline{steady_clock::time_point::max()};
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

void setExitDeadline(std::optional<milliseconds> fromNow) {
  auto deadline = steady_clock::time_point::max();
  const auto now = steady_clock::now();
  if (fromNow && *fromNow < std::chrono::floor<milliseconds>(deadline - now)) {
    deadline = now + std::max(*fromNow, milliseconds::zero());
  }
  processState().exitDeadline = deadline;
}

steady_clock::time_point exitDeadline() { return processState().exitDeadline; }

}  // namespace qel::protocol::https
