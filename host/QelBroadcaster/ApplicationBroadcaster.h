#pragma once

#include <cstdint>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"
#include "host/QelAssert/AssertInfo.h"

namespace qel::broadcaster {

namespace event {

/// What happened to the application, in a text of the host's choice.
struct ApplicationEvent {
  std::string text;
};

struct ApplicationStartEvent : ApplicationEvent {};
struct ApplicationStopEvent : ApplicationEvent {};

struct ApplicationCrashEvent : ApplicationEvent {
  std::int32_t code = 0;  ///< the platform's exception code
};

struct ApplicationAssertEvent : ApplicationEvent {
  assert::AssertInfo assertInfo;
};

}  // namespace event

/// Told of the application's start, stop, crash and failed assertions.
class ApplicationListenerInterface {
 public:
  virtual ~ApplicationListenerInterface() = default;

  virtual void onApplicationStarted(const event::ApplicationStartEvent& event) = 0;
  virtual void onApplicationStopped(const event::ApplicationStopEvent& event) = 0;
  virtual void onApplicationCrashed(const event::ApplicationCrashEvent& event) = 0;
  virtual void onApplicationAsserted(const event::ApplicationAssertEvent& event) = 0;
};

/// The process's broadcaster of what happens to the application.
class ApplicationBroadcaster : public Broadcaster<ApplicationListenerInterface> {
 public:
  static ApplicationBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
