#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <istream>
#include <string>
#include <variant>
#include <vector>

namespace qel::samplehost {

/// Broadcasts one notification through the host's broadcaster, on its thread.
using Broadcast = std::function<void()>;

struct Wait {
  std::chrono::duration<double> time;
};

/// Stores the queued items.
struct Join {};
struct StartSending {};
struct StopSending {};

/// The counts that the web-update reporter returns from now on.
struct WebUpdate {
  std::uint64_t success = 0;
  std::uint64_t corrupt = 0;
};

/// One line of a session script.
struct Step {
  std::size_t line = 0;  ///< counted from 1
  std::variant<Broadcast, Wait, Join, StartSending, StopSending, WebUpdate> action;
};

/// Reads a whole script of JSON Lines: notifications with their fields, and control lines. Skips
/// blank lines and broadcasts nothing. Throws `InputError` at the first fault. The message begins
/// with "`name`:line: ".
std::vector<Step> readSessionScript(std::istream& script, const std::string& name);

}  // namespace qel::samplehost
