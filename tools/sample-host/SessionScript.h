#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>
#include <variant>
#include <vector>

#include "host/QelNotification/Notification.h"

namespace qel::samplehost {

using notification::Broadcast;

struct Wait {
  std::chrono::duration<double> time;
};

/// Waits until all queued items are stored.
struct Join {};
struct StartSending {};
struct StopSending {};

/// The counts that the web-update reporter returns after this step.
struct WebUpdate {
  std::uint64_t success = 0;
  std::uint64_t corrupt = 0;
};

/// One line of a session script.
struct Step {
  std::size_t line = 0;  ///< counted from 1
  std::variant<Broadcast, Wait, Join, StartSending, StopSending, WebUpdate> action;
};

/// Reads a whole script in the JSON Lines format: notifications with their fields, and control
/// lines. Skips blank lines and broadcasts nothing. Throws `tools::InputError` at the first invalid
/// line. The message starts with "`name`:line: ".
std::vector<Step> readSessionScript(std::istream& script, const std::string& name);

}  // namespace qel::samplehost
