#pragma once

#include <cstdint>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

/// What the user answered when asked whether to restore a project.
enum class RestoreAnswer : std::uint32_t { Yes, No };

namespace event {

struct ProjectOpenEvent {
  std::string project;
  std::string information;  ///< may be empty
};

struct ProjectCloseEvent {
  std::string project;
};

/// A project was found that an unclean end of the program had left behind.
struct ProjectRestoreDialogEvent {
  std::string project;
  std::string lastSave;  ///< its time, as shown to the user
  std::string projectFile;
  RestoreAnswer answer = RestoreAnswer::Yes;
};

/// Something that has a name gained or lost the focus.
struct FocusEvent {
  std::string name;
};

struct BimFileFocusEvent : FocusEvent {};
struct BimFileUnfocusEvent : FocusEvent {};
struct BimModelFocusEvent : FocusEvent {};
struct BimModelUnfocusEvent : FocusEvent {};
struct PresentationFocusEvent : FocusEvent {};
struct PresentationUnfocusEvent : FocusEvent {};

}  // namespace event

/// Told of projects that are opened, closed and restored, and of what has the focus.
class ProjectListenerInterface {
 public:
  virtual ~ProjectListenerInterface() = default;

  virtual void onProjectOpened(const event::ProjectOpenEvent& event) = 0;
  virtual void onProjectClosed(const event::ProjectCloseEvent& event) = 0;
  virtual void onProjectRestored(const event::ProjectRestoreDialogEvent& event) = 0;
  virtual void onBimFileFocused(const event::BimFileFocusEvent& event) = 0;
  virtual void onBimFileUnfocused(const event::BimFileUnfocusEvent& event) = 0;
  virtual void onBimModelFocused(const event::BimModelFocusEvent& event) = 0;
  virtual void onBimModelUnfocused(const event::BimModelUnfocusEvent& event) = 0;
  virtual void onPresentationFocused(const event::PresentationFocusEvent& event) = 0;
  virtual void onPresentationUnfocused(const event::PresentationUnfocusEvent& event) = 0;
};

/// The process's broadcaster of what happens to projects.
class ProjectBroadcaster : public Broadcaster<ProjectListenerInterface> {
 public:
  static ProjectBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
