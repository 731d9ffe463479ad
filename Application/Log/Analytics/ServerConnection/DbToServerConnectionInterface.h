#pragma once

#include "Application/Log/Analytics/Items/ItemWrapper.h"
#include "QelAnalyticsExport.h"

namespace qel::log::analytics::parameters {
struct ActivateParameter;
}

namespace qel::log::analytics::serverconnection {

/// Sends packages to the analytics server.
class QEL_ANALYTICS_EXPORT DbToServerConnectionInterface {
 public:
  /// Copies the user and the secret. Must be called before the first `send`, and never at the same
  /// time as one.
  virtual void initalize(const parameters::ActivateParameter& parameter) = 0;
  /// Returns whether the server accepted the package. A package without rows is not sent and not
  /// accepted. Throws what the exchange throws when it does not end validly. One thread at a time.
  virtual bool send(items::ItemWrapper& package) = 0;
  virtual ~DbToServerConnectionInterface() = default;
};

}  // namespace qel::log::analytics::serverconnection
