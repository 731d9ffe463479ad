#pragma once

#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/SaveBroadcaster.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::listeners {

/// Records answers to save prompts, and automatic saves. The subcategory is "SaveFile" or
/// "SaveProject", empty for any other kind.
class QEL_ANALYTICS_EXPORT SaveListener : public qel::broadcaster::SaveListenerInterface {
 public:
  /// The databases must outlive the listener.
  explicit SaveListener(CipDatabases& databases) : databases_(databases) {}

  /// Event "UserAction". Records the answer as "UserAction" ("Unknown" if it has no name) and the
  /// prompt as "Message", even if it is empty.
  void onSavePromptAnswered(const qel::broadcaster::event::SaveDialogEvent& event) override;
  /// Event "AutoSave". Records "ProjectFilePath", and "Succeeded" as "True" or "False".
  void onAutoSave(const qel::broadcaster::event::AutoSaveEvent& event) override;

 private:
  CipDatabases& databases_;
};

}  // namespace qel::log::analytics::listeners
