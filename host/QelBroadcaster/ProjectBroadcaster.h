#pragma once

#include <cstdint>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

/// What the user answered when asked whether to restore a project.
enum class RestoreAnswer : std::uint32_t { Yes, No };

namespace event {

/// A project was opened.
struct ProjectOpenEvent {
  std::string project;      ///< its name (UTF-8, like all texts here)
  std::string information;  ///< may be empty
};

/// A project was closed.
struct ProjectCloseEvent {
  std::string project;  ///< its name
};

/// A project was found that an unclean end of the program had left behind, and the user was asked
/// whether to restore it.
struct ProjectRestoreDialogEvent {
  std::string project;                        ///< its name
  std::string lastSave;                       ///< its time, as shown to the user
  std::string projectFile;                    ///< its path
  RestoreAnswer answer = RestoreAnswer::Yes;  ///< also No is told
};

/// Something that has a name gained or lost the focus.
struct FocusEvent {
  std::string name;  ///< of the file, model or presentation
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

/// Told of projects that are opened, closed and restored, and of what has the focus.
class ProjectListenerInterface {
 public:
  virtual ~ProjectListenerInterface() = default;

  /// Told when it has happened. The event lives for the call only.
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

/// The process's broadcaster of what happens to projects.
class ProjectBroadcaster : public Broadcaster<ProjectListenerInterface> {
 public:
  /// Always the same object, whichever library asks; it is never destroyed.
  static ProjectBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
