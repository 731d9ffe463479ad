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
  std::string id;    ///< the command's, the same when it ends (UTF-8, like all texts here)
  std::string text;  ///< its name, as users know it
  CommandLocation location = CommandLocation::Code;  ///< what it was invoked by
  /// By keys of the host's choice. None is the same as an empty map.
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
  /// By keys of the host's choice. None is the same as an empty map.
  std::optional<std::map<std::string, std::string>> details;
};

}  // namespace event

/// Told of every command that starts and ends.
class CommandListenerInterface {
 public:
  virtual ~CommandListenerInterface() = default;

  /// Nothing pairs a command's start and end but its `id`. The event lives for the call only.
  /// @{
  virtual void onCommandStarted(const event::CommandStartEvent& event) = 0;
  virtual void onCommandStopped(const event::CommandStopEvent& event) = 0;
  /// @}
};

/// The process's broadcaster of commands.
class CommandBroadcaster : public Broadcaster<CommandListenerInterface> {
 public:
  /// Always the same object, whichever library asks; it is never destroyed.
  static CommandBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
