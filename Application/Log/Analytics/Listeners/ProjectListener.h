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
  explicit ProjectListener(CipDatabases& databases) : databases_(databases) {}

  void onProjectOpened(const qel::broadcaster::event::ProjectOpenEvent& event) override;
  void onProjectClosed(const qel::broadcaster::event::ProjectCloseEvent& event) override;
  void onProjectRestored(const qel::broadcaster::event::ProjectRestoreDialogEvent& event) override;
  void onBimFileFocused(const qel::broadcaster::event::BimFileFocusEvent& event) override;
  void onBimFileUnfocused(const qel::broadcaster::event::BimFileUnfocusEvent& event) override;
  void onBimModelFocused(const qel::broadcaster::event::BimModelFocusEvent& event) override;
  void onBimModelUnfocused(const qel::broadcaster::event::BimModelUnfocusEvent& event) override;
  void onPresentationFocused(const qel::broadcaster::event::PresentationFocusEvent& event) override;
  void onPresentationUnfocused(
      const qel::broadcaster::event::PresentationUnfocusEvent& event) override;

 private:
  CipDatabases& databases_;
};

}  // namespace qel::log::analytics::listeners
