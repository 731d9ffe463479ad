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

struct SaveDialogEvent {
  SaveKind kind = SaveKind::File;
  std::string message;  ///< as shown in the prompt
  SaveAnswer answer = SaveAnswer::Ok;
};

struct AutoSaveEvent {
  SaveKind kind = SaveKind::File;
  std::string path;  ///< of the saved project file
  bool succeeded = false;
};

}  // namespace event

/// Told of answers to save prompts, and of automatic saves.
class SaveListenerInterface {
 public:
  virtual ~SaveListenerInterface() = default;

  virtual void onSavePromptAnswered(const event::SaveDialogEvent& event) = 0;
  virtual void onAutoSave(const event::AutoSaveEvent& event) = 0;
};

/// The process's broadcaster of saving.
class SaveBroadcaster : public Broadcaster<SaveListenerInterface> {
 public:
  static SaveBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
