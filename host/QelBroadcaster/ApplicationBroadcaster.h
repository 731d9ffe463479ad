#pragma once

#include <cstdint>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"
#include "host/QelAssert/AssertInfo.h"

namespace qel::broadcaster {

namespace event {

/// An event of the application, with a text of the host's choice.
struct ApplicationEvent {
  std::string text;  ///< UTF-8; may be empty
};

/// The program has started.
struct ApplicationStartEvent : ApplicationEvent {};
/// The program is about to end.
struct ApplicationStopEvent : ApplicationEvent {};

/// The program has crashed.
struct ApplicationCrashEvent : ApplicationEvent {
  std::int32_t code = 0;  ///< the platform's exception code
};

/// An assertion failed in the program.
struct ApplicationAssertEvent : ApplicationEvent {
  assert::AssertInfo assertInfo;  ///< the record that the assertion handler received
};

}  // namespace event

/// Is notified when the application starts, stops, crashes or fails an assertion.
class ApplicationListenerInterface {
 public:
  virtual ~ApplicationListenerInterface() = default;

  /// Called when the event happens. The event is valid only during the call.
  /// @{
  virtual void onApplicationStarted(const event::ApplicationStartEvent& event) = 0;
  virtual void onApplicationStopped(const event::ApplicationStopEvent& event) = 0;
  virtual void onApplicationCrashed(const event::ApplicationCrashEvent& event) = 0;
  virtual void onApplicationAsserted(const event::ApplicationAssertEvent& event) = 0;
  /// @}
};

/// The process's broadcaster of application events.
class ApplicationBroadcaster : public Broadcaster<ApplicationListenerInterface> {
 public:
  /// Returns the same object in every library. The object is never destroyed.
  static ApplicationBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
