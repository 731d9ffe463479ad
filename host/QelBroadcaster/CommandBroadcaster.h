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

struct CommandStartEvent {
  std::string id;
  std::string text;
  CommandLocation location = CommandLocation::Code;
  std::optional<std::map<std::string, std::string>> details;
};

struct CommandStopEvent {
  std::string id;
  std::string text;
  bool cancelled = false;
  std::optional<std::map<std::string, std::string>> details;
};

}  // namespace event

/// Told of every command that starts and ends.
class CommandListenerInterface {
 public:
  virtual ~CommandListenerInterface() = default;

  virtual void onCommandStarted(const event::CommandStartEvent& event) = 0;
  virtual void onCommandStopped(const event::CommandStopEvent& event) = 0;
};

/// The process's broadcaster of commands.
class CommandBroadcaster : public Broadcaster<CommandListenerInterface> {
 public:
  static CommandBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
