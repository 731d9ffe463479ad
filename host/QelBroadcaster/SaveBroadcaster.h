#pragma once

#include <cstdint>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

/// The object that is saved.
enum class SaveKind : std::uint32_t { File, Project };

/// The user's answer to a save prompt.
enum class SaveAnswer : std::uint32_t { Ok, Cancel, Retry, Yes, No, TryAgain, Continue };

namespace event {

/// The user answered a prompt about saving.
struct SaveDialogEvent {
  /// The object to save, the prompt's text (UTF-8), and the user's choice.
  /// @{
  SaveKind kind = SaveKind::File;
  std::string message;
  SaveAnswer answer = SaveAnswer::Ok;
  /// @}
};

/// The program saved, or tried to save, by itself.
struct AutoSaveEvent {
  /// The object to save, the project file's path (UTF-8), and whether it succeeded.
  /// @{
  SaveKind kind = SaveKind::File;
  std::string path;
  bool succeeded = false;
  /// @}
};

}  // namespace event

/// Receives answers to save prompts, and automatic saves.
class SaveListenerInterface {
 public:
  virtual ~SaveListenerInterface() = default;

  /// Called when it has happened. The event is valid only during the call.
  /// @{
  virtual void onSavePromptAnswered(const event::SaveDialogEvent& event) = 0;
  virtual void onAutoSave(const event::AutoSaveEvent& event) = 0;
  /// @}
};

/// The process's broadcaster of save events.
class SaveBroadcaster : public Broadcaster<SaveListenerInterface> {
 public:
  /// The same object in every library. Never destroyed.
  static SaveBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
