#pragma once

#include <map>
#include <memory>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

namespace event {

/// A host event that describes itself. Listeners may keep the event, and read and release it later
/// on other threads. So its strings must not change, and reading them must be thread-safe.
class GeneralEventInterface {
 public:
  virtual ~GeneralEventInterface() = default;

  /// The parts of the description, chosen by the host (UTF-8). Each part may be empty. These
  /// operations must not throw, because a listener that reads the event later may then stop
  /// permanently.
  /// @{
  virtual std::string getCategory() const = 0;
  virtual std::string getSubCategory() const = 0;
  virtual std::string getEvent() const = 0;
  virtual std::map<std::string, std::string> getDetails() const = 0;
  /// @}
};

}  // namespace event

using event::GeneralEventInterface;

/// Receives events that describe themselves.
class GeneralListenerInterface {
 public:
  virtual ~GeneralListenerInterface() = default;

  /// `event` may be null, which means an event without a description. A listener may keep the
  /// pointer.
  virtual void onGeneralAction(std::shared_ptr<const event::GeneralEventInterface> event) = 0;
};

/// The process's broadcaster of events that describe themselves.
class GeneralBroadcaster : public Broadcaster<GeneralListenerInterface> {
 public:
  /// Returns the same object in every library. The object is never destroyed.
  static GeneralBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
