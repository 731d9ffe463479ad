#pragma once

#include <cstdint>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

/// The user's answer to the question whether to restore a project.
enum class RestoreAnswer : std::uint32_t { Yes, No };

namespace event {

/// A project was opened.
struct ProjectOpenEvent {
  std::string project;      ///< the project's name (UTF-8, like all strings here)
  std::string information;  ///< additional information; may be empty
};

/// A project was closed.
struct ProjectCloseEvent {
  std::string project;  ///< the project's name
};

/// The program found a project that was open when an earlier run ended uncleanly. It asked the user
/// whether to restore the project.
struct ProjectRestoreDialogEvent {
  std::string project;                        ///< the project's name
  std::string lastSave;                       ///< time of the last save, as the user saw it
  std::string projectFile;                    ///< the project file's path
  RestoreAnswer answer = RestoreAnswer::Yes;  ///< both answers are broadcast
};

/// A named object gained or lost the focus.
struct FocusEvent {
  std::string name;  ///< name of the file, model or presentation
};

/// A BIM file gained the focus.
struct BimFileFocusEvent : FocusEvent {};
/// A BIM file lost the focus.
struct BimFileUnfocusEvent : FocusEvent {};
/// A BIM model gained the focus.
struct BimModelFocusEvent : FocusEvent {};
/// A BIM model lost the focus.
struct BimModelUnfocusEvent : FocusEvent {};
/// A presentation gained the focus.
struct PresentationFocusEvent : FocusEvent {};
/// A presentation lost the focus.
struct PresentationUnfocusEvent : FocusEvent {};

}  // namespace event

/// Is notified when projects are opened, closed and restored, and when the focus changes.
class ProjectListenerInterface {
 public:
  virtual ~ProjectListenerInterface() = default;

  /// Called after the event has happened. The event is valid only during the call.
  /// @{
  virtual void onProjectOpened(const event::ProjectOpenEvent& event) = 0;
  virtual void onProjectClosed(const event::ProjectCloseEvent& event) = 0;
  virtual void onProjectRestored(const event::ProjectRestoreDialogEvent& event) = 0;
  virtual void onBimFileFocused(const event::BimFileFocusEvent& event) = 0;
  virtual void onBimFileUnfocused(const event::BimFileUnfocusEvent& event) = 0;
  virtual void onBimModelFocused(const event::BimModelFocusEvent& event) = 0;
  virtual void onBimModelUnfocused(const event::BimModelUnfocusEvent& event) = 0;
  virtual void onPresentationFocused(const event::PresentationFocusEvent& event) = 0;
  virtual void onPresentationUnfocused(const event::PresentationUnfocusEvent& event) = 0;
  /// @}
};

/// The process's broadcaster of project events.
class ProjectBroadcaster : public Broadcaster<ProjectListenerInterface> {
 public:
  /// Returns the same object in every library. The object is never destroyed.
  static ProjectBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
