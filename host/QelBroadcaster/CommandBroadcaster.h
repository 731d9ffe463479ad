#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

/// Where in the user interface a command was invoked.
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

/// A command begins.
struct CommandStartEvent {
  std::string id;    ///< the command's, the same at its end (UTF-8, like all texts here)
  std::string text;  ///< its name for users
  CommandLocation location = CommandLocation::Code;  ///< what invoked it
  /// By keys of the host's choice. No map is the same as an empty one.
  std::optional<std::map<std::string, std::string>> details;
};

/// A command ends.
struct CommandStopEvent {
  /// As at its start.
  /// @{
  std::string id;
  std::string text;
  /// @}
  bool cancelled = false;  ///< otherwise it was accepted
  /// By keys of the host's choice. No map is the same as an empty one.
  std::optional<std::map<std::string, std::string>> details;
};

}  // namespace event

/// Receives the start and the end of every command.
class CommandListenerInterface {
 public:
  virtual ~CommandListenerInterface() = default;

  /// Only its `id` pairs a command's start and end. The event is valid only during the call.
  /// @{
  virtual void onCommandStarted(const event::CommandStartEvent& event) = 0;
  virtual void onCommandStopped(const event::CommandStopEvent& event) = 0;
  /// @}
};

/// The process's broadcaster of commands.
class CommandBroadcaster : public Broadcaster<CommandListenerInterface> {
 public:
  /// The same object in every library. Never destroyed.
  static CommandBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
