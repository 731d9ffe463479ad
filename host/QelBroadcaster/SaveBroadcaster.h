#pragma once

#include <cstdint>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

/// What is saved.
enum class SaveKind : std::uint32_t { File, Project };

/// What the user answered when asked whether to save.
enum class SaveAnswer : std::uint32_t { Ok, Cancel, Retry, Yes, No, TryAgain, Continue };

namespace event {

/// The user was asked something about saving.
struct SaveDialogEvent {
  /// What was to be saved, the prompt's text as shown (UTF-8), and what the user chose.
  /// @{
  SaveKind kind = SaveKind::File;
  std::string message;
  SaveAnswer answer = SaveAnswer::Ok;
  /// @}
};

/// The program saved, or tried to, without being asked.
struct AutoSaveEvent {
  /// What was to be saved, the project file's path (UTF-8), and whether that went well.
  /// @{
  SaveKind kind = SaveKind::File;
  std::string path;
  bool succeeded = false;
  /// @}
};

}  // namespace event

/// Told of answers to save prompts, and of automatic saves.
class SaveListenerInterface {
 public:
  virtual ~SaveListenerInterface() = default;

  /// Told when it has happened. The event lives for the call only.
  /// @{
  virtual void onSavePromptAnswered(const event::SaveDialogEvent& event) = 0;
  virtual void onAutoSave(const event::AutoSaveEvent& event) = 0;
  /// @}
};

/// The process's broadcaster of saving.
class SaveBroadcaster : public Broadcaster<SaveListenerInterface> {
 public:
  /// Always the same object, whichever library asks; it is never destroyed.
  static SaveBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
