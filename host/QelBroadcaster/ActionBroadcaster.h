#pragma once

#include <map>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

namespace event {

/// A user action in one of the program's views.
struct ActionEvent {
  std::string name;                            ///< the action's name, chosen by the host (UTF-8)
  std::map<std::string, std::string> details;  ///< with keys of the host's choice; may be empty
};

/// An action in the BCF view.
struct BcfActionEvent : ActionEvent {};
/// An action in the help view.
struct HelpActionEvent : ActionEvent {};
/// An action in the project manager.
struct ProjectManagerEvent : ActionEvent {};
/// An action in the graphic view.
struct GraphicActionEvent : ActionEvent {};

}  // namespace event

/// Receives user actions in the BCF, help, project manager and graphic views.
class ActionListenerInterface {
 public:
  virtual ~ActionListenerInterface() = default;

  /// Called for each action in the corresponding view. The event is valid only during the call.
  /// @{
  virtual void onBcfAction(const event::BcfActionEvent& event) = 0;
  virtual void onHelpAction(const event::HelpActionEvent& event) = 0;
  virtual void onProjectManagerAction(const event::ProjectManagerEvent& event) = 0;
  virtual void onGraphicAction(const event::GraphicActionEvent& event) = 0;
  /// @}
};

/// The process's broadcaster of user actions.
class ActionBroadcaster : public Broadcaster<ActionListenerInterface> {
 public:
  /// Returns the same object in every library. The object is never destroyed.
  static ActionBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
