#pragma once

#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/SaveBroadcaster.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::listeners {

/// Records answers to save prompts, and automatic saves.
class QEL_ANALYTICS_EXPORT SaveListener : public qel::broadcaster::SaveListenerInterface {
 public:
  explicit SaveListener(CipDatabases& databases) : databases_(databases) {}

  void onSavePromptAnswered(const qel::broadcaster::event::SaveDialogEvent& event) override;
  void onAutoSave(const qel::broadcaster::event::AutoSaveEvent& event) override;

 private:
  CipDatabases& databases_;
};

}  // namespace qel::log::analytics::listeners
