#pragma once

#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::listeners {

/// Records user actions in the BCF, help, project manager and graphic views. What building or
/// inserting an item throws reaches the broadcaster; so it does in every listener, but for the
/// building of an added issue's item.
class QEL_ANALYTICS_EXPORT ActionListener : public qel::broadcaster::ActionListenerInterface {
 public:
  /// The databases outlive the listener.
  explicit ActionListener(CipDatabases& databases) : databases_(databases) {}

  /// Each tells the action's name and details as they are; the category says which view it was.
  /// @{
  void onBcfAction(const qel::broadcaster::event::BcfActionEvent& event) override;
  void onHelpAction(const qel::broadcaster::event::HelpActionEvent& event) override;
  void onProjectManagerAction(const qel::broadcaster::event::ProjectManagerEvent& event) override;
  void onGraphicAction(const qel::broadcaster::event::GraphicActionEvent& event) override;
  /// @}

 private:
  CipDatabases& databases_;
};

}  // namespace qel::log::analytics::listeners
