#pragma once

#include <cstdint>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

/// The kind of object that is saved.
enum class SaveKind : std::uint32_t { File, Project };

/// The user's answer to a save prompt.
enum class SaveAnswer : std::uint32_t { Ok, Cancel, Retry, Yes, No, TryAgain, Continue };

namespace event {

/// The user answered a prompt about saving.
struct SaveDialogEvent {
  /// The kind of object to save, the prompt's text (UTF-8), and the user's choice.
  /// @{
  SaveKind kind = SaveKind::File;
  std::string message;
  SaveAnswer answer = SaveAnswer::Ok;
  /// @}
};

/// The program saved automatically, or tried to.
struct AutoSaveEvent {
  /// The kind of object to save, the project file's path (UTF-8), and whether saving succeeded.
  /// @{
  SaveKind kind = SaveKind::File;
  std::string path;
  bool succeeded = false;
  /// @}
};

}  // namespace event

/// Is notified of answers to save prompts, and of automatic saves.
class SaveListenerInterface {
 public:
  virtual ~SaveListenerInterface() = default;

  /// Called after the event has happened. The event is valid only during the call.
  /// @{
  virtual void onSavePromptAnswered(const event::SaveDialogEvent& event) = 0;
  virtual void onAutoSave(const event::AutoSaveEvent& event) = 0;
  /// @}
};

/// The process's broadcaster of save events.
class SaveBroadcaster : public Broadcaster<SaveListenerInterface> {
 public:
  /// Returns the same object in every library. The object is never destroyed.
  static SaveBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
