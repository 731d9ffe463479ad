#pragma once

#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/ActionBroadcaster.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::listeners {

/// Records user actions in the BCF, help, project manager and graphic views.
///
/// An exception that occurs while an item is created or inserted propagates to the broadcaster.
/// This applies to every listener of the client, except when the item of an added issue is created.
class QEL_ANALYTICS_EXPORT ActionListener : public qel::broadcaster::ActionListenerInterface {
 public:
  /// The databases must outlive the listener.
  explicit ActionListener(CipDatabases& databases) : databases_(databases) {}

  /// Each records the name and the details of the action unchanged. The category is the view.
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
