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

/// Writes what is queued.
struct Join {};
struct StartSending {};
struct StopSending {};

/// What the web-update reporter has to tell from now on.
struct WebUpdate {
  std::uint64_t success = 0;
  std::uint64_t corrupt = 0;
};

/// One line of a session script.
struct Step {
  std::size_t line = 0;  ///< counted from 1
  std::variant<Broadcast, Wait, Join, StartSending, StopSending, WebUpdate> action;
};

/// Reads a whole script: JSON Lines, each a notification with its fields or a control line; blank
/// lines are skipped. Broadcasts nothing. Throws `InputError` with a message that begins with
/// "`name`:line: " at the first fault.
std::vector<Step> readSessionScript(std::istream& script, const std::string& name);

}  // namespace qel::samplehost
