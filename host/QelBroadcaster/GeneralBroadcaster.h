#pragma once

#include <map>
#include <memory>
#include <string>

#include "Core/Utilities/Template/Broadcaster.h"

namespace qel::broadcaster {

namespace event {

/// A host event that describes itself.
class GeneralEventInterface {
 public:
  virtual ~GeneralEventInterface() = default;

  virtual std::string getCategory() const = 0;
  virtual std::string getSubCategory() const = 0;
  virtual std::string getEvent() const = 0;
  virtual std::map<std::string, std::string> getDetails() const = 0;
};

}  // namespace event

/// Told of events that describe themselves.
class GeneralListenerInterface {
 public:
  virtual ~GeneralListenerInterface() = default;

  virtual void onGeneralAction(std::shared_ptr<const event::GeneralEventInterface> event) = 0;
};

/// The process's broadcaster of events that describe themselves.
class GeneralBroadcaster : public Broadcaster<GeneralListenerInterface> {
 public:
  static GeneralBroadcaster& getInstance();
};

}  // namespace qel::broadcaster
