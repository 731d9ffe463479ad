#pragma once

#include <map>
#include <memory>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

namespace event {

/// A host event that describes itself. Listeners may keep it, ask it later and let go of it on
/// threads of their own, so what it tells must not change and must be safe to read there.
class GeneralEventInterface {
 public:
  virtual ~GeneralEventInterface() = default;

  /// In the host's words (UTF-8); any of them may be empty. They must not throw: a listener that
  /// asks later has nobody to tell, and may give up for good.
  /// @{
  virtual std::string getCategory() const = 0;
  virtual std::string getSubCategory() const = 0;
  virtual std::string getEvent() const = 0;
  virtual std::map<std::string, std::string> getDetails() const = 0;
  /// @}
};

}  // namespace event

using event::GeneralEventInterface;

/// Told of events that describe themselves.
class GeneralListenerInterface {
 public:
  virtual ~GeneralListenerInterface() = default;

  /// `event` may be null, an event without any description. A listener may keep it.
  virtual void onGeneralAction(std::shared_ptr<const event::GeneralEventInterface> event) = 0;
};

/// The process's broadcaster of events that describe themselves.
class GeneralBroadcaster : public Broadcaster<GeneralListenerInterface> {
 public:
  /// Always the same object, whichever library asks; it is never destroyed.
  static GeneralBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
