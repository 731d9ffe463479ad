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
  /// Copies the server's name, the user and the secret. Must be called before the first `send`, and
  /// never concurrently with `send`.
  virtual void initalize(const parameters::ActivateParameter& parameter) = 0;
  /// Returns true if the server accepted the package. A package with no rows is not sent, and the
  /// result is false. Passes on exceptions from the HTTPS exchange. Must not be called
  /// concurrently.
  virtual bool send(items::ItemWrapper& package) = 0;
  virtual ~DbToServerConnectionInterface() = default;
};

}  // namespace qel::log::analytics::serverconnection
