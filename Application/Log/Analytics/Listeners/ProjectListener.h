#pragma once

#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/ProjectBroadcaster.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::listeners {

/// Records when projects are opened, closed and restored, and when BIM files, BIM models and
/// presentations gain or lose focus.
class QEL_ANALYTICS_EXPORT ProjectListener : public qel::broadcaster::ProjectListenerInterface {
 public:
  /// The databases must outlive the listener.
  explicit ProjectListener(CipDatabases& databases) : databases_(databases) {}

  /// Records the additional information as "Info", unless it is empty.
  void onProjectOpened(const qel::broadcaster::event::ProjectOpenEvent& event) override;
  /// Records only the name of the project.
  void onProjectClosed(const qel::broadcaster::event::ProjectCloseEvent& event) override;
  /// Records "LastSave" and "ProjectFile" unchanged, and "UserAction" as "Yes", "No" or "Unknown".
  void onProjectRestored(const qel::broadcaster::event::ProjectRestoreDialogEvent& event) override;
  /// Each records only the name of the object that gained or lost focus.
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
