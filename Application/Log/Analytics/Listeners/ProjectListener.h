#pragma once

#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/ProjectBroadcaster.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::listeners {

/// Records projects that are opened, closed and restored, and which BIM file, BIM model or
/// presentation has the focus.
class QEL_ANALYTICS_EXPORT ProjectListener : public qel::broadcaster::ProjectListenerInterface {
 public:
  /// The databases outlive the listener.
  explicit ProjectListener(CipDatabases& databases) : databases_(databases) {}

  /// Tells the additional information as "Info", unless it is empty.
  void onProjectOpened(const qel::broadcaster::event::ProjectOpenEvent& event) override;
  /// Tells nothing but the project's name.
  void onProjectClosed(const qel::broadcaster::event::ProjectCloseEvent& event) override;
  /// Tells "LastSave" and "ProjectFile" as they are, and "UserAction": "Yes", "No" or "Unknown".
  void onProjectRestored(const qel::broadcaster::event::ProjectRestoreDialogEvent& event) override;
  /// Each tells nothing but the name of what got or lost the focus.
  /// @{
  void onBimFileFocused(const qel::broadcaster::event::BimFileFocusEvent& event) override;
  void onBimFileUnfocused(const qel::broadcaster::event::BimFileUnfocusEvent& event) override;
  void onBimModelFocused(const qel::broadcaster::event::BimModelFocusEvent& event) override;
  void onBimModelUnfocused(const qel::broadcaster::event::BimModelUnfocusEvent& event) override;
  void onPresentationFocused(const qel::broadcaster::event::PresentationFocusEvent& event) override;
  void onPresentationUnfocused(
      const qel::broadcaster::event::PresentationUnfocusEvent& event) override;
  /// @}

 private:
  CipDatabases& databases_;
};

}  // namespace qel::log::analytics::listeners
