#pragma once

#include "QelAnalyticsExport.h"
#include "host/QelBroadcaster/SaveBroadcaster.h"

namespace qel::log::analytics {
class CipDatabases;
}

namespace qel::log::analytics::listeners {

/// Records answers to save prompts, and automatic saves. The subcategory is "SaveFile" or
/// "SaveProject", or empty for any other kind.
class QEL_ANALYTICS_EXPORT SaveListener : public qel::broadcaster::SaveListenerInterface {
 public:
  /// The databases must outlive the listener.
  explicit SaveListener(CipDatabases& databases) : databases_(databases) {}

  /// The event is "UserAction". Records the answer as "UserAction" ("Unknown" if the answer has no
  /// name). Records the prompt as "Message", even if the prompt is empty.
  void onSavePromptAnswered(const qel::broadcaster::event::SaveDialogEvent& event) override;
  /// The event is "AutoSave". Records "ProjectFilePath", and "Succeeded" as "True" or "False".
  void onAutoSave(const qel::broadcaster::event::AutoSaveEvent& event) override;

 private:
  CipDatabases& databases_;
};

}  // namespace qel::log::analytics::listeners
