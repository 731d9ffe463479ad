#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

/// The place from which a command was invoked.
enum class CommandLocation : std::uint32_t {
  Code,
  Grip,
  CommandLine,
  AcceleratorTable,
  Menu,
  ContextToolbar,
  FixedToolbar,
  Popup,
  ObjectPopup,
  StatusBar,
  ViewToolbar
};

namespace event {

/// A command starts.
struct CommandStartEvent {
  std::string id;    ///< the same in the stop event (UTF-8, like all strings here)
  std::string text;  ///< the command's name for users
  CommandLocation location = CommandLocation::Code;  ///< the place of invocation
  /// Details with keys of the host's choice. No map means the same as an empty map.
  std::optional<std::map<std::string, std::string>> details;
};

/// A command ends.
struct CommandStopEvent {
  /// The same values as in the start event.
  /// @{
  std::string id;
  std::string text;
  /// @}
  bool cancelled = false;  ///< false if the command was accepted
  /// Details with keys of the host's choice. No map means the same as an empty map.
  std::optional<std::map<std::string, std::string>> details;
};

}  // namespace event

/// Receives the start and the end of every command.
class CommandListenerInterface {
 public:
  virtual ~CommandListenerInterface() = default;

  /// The start and the end of a command are paired only by their `id`. The event is valid only
  /// during the call.
  /// @{
  virtual void onCommandStarted(const event::CommandStartEvent& event) = 0;
  virtual void onCommandStopped(const event::CommandStopEvent& event) = 0;
  /// @}
};

/// The process's broadcaster of commands.
class CommandBroadcaster : public Broadcaster<CommandListenerInterface> {
 public:
  /// Returns the same object in every library. The object is never destroyed.
  static CommandBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
