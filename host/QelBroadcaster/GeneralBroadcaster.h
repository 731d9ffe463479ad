#pragma once

#include <map>
#include <memory>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

namespace event {

/// A host event that describes itself. Listeners may keep it, and read and release it later on
/// other threads. Its texts must not change and must be safe to read there.
class GeneralEventInterface {
 public:
  virtual ~GeneralEventInterface() = default;

  /// In the host's words (UTF-8). Any of them may be empty. They must not throw: a listener that
  /// reads them later may stop for good.
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

  /// `event` may be null, for an event without a description. A listener may keep it.
  virtual void onGeneralAction(std::shared_ptr<const event::GeneralEventInterface> event) = 0;
};

/// The process's broadcaster of events that describe themselves.
class GeneralBroadcaster : public Broadcaster<GeneralListenerInterface> {
 public:
  /// The same object in every library. Never destroyed.
  static GeneralBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
