#pragma once

#include "Application/Log/Analytics/Items/ItemWrapper.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::parameters {
struct ActivateParameter;
}

namespace qel::log::analytics::serverconnection {

/// Brings packages to the analytics server.
class QEL_ANALYTICS_EXPORT DbToServerConnectionInterface {
 public:
  /// Takes the user and the secret over. Called before the first `send`, never beside one.
  virtual void initalize(const parameters::ActivateParameter& parameter) = 0;
  /// Whether the server accepted the package. False without any traffic for one whose rows are all
  /// missing. Throws what the exchange throws when it comes to no valid end. One thread at a time.
  virtual bool send(items::ItemWrapper& package) = 0;
  virtual ~DbToServerConnectionInterface() = default;
};

}  // namespace qel::log::analytics::serverconnection
