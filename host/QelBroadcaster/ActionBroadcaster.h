#pragma once

#include <map>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

namespace event {

/// What the user did in one of the program's views.
struct ActionEvent {
  std::string name;
  std::map<std::string, std::string> details;
};

struct BcfActionEvent : ActionEvent {};
struct HelpActionEvent : ActionEvent {};
struct ProjectManagerEvent : ActionEvent {};
struct GraphicActionEvent : ActionEvent {};

}  // namespace event

/// Told of user actions in the BCF, help, project manager and graphic views.
class ActionListenerInterface {
 public:
  virtual ~ActionListenerInterface() = default;

  virtual void onBcfAction(const event::BcfActionEvent& event) = 0;
  virtual void onHelpAction(const event::HelpActionEvent& event) = 0;
  virtual void onProjectManagerAction(const event::ProjectManagerEvent& event) = 0;
  virtual void onGraphicAction(const event::GraphicActionEvent& event) = 0;
};

/// The process's broadcaster of user actions.
class ActionBroadcaster : public Broadcaster<ActionListenerInterface> {
 public:
  static ActionBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
