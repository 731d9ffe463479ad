#pragma once

#include "Application/Log/Analytics/ServerConnection/DbToServerConnectionInterface.h"
#include "host/QelHttp/Message.h"

namespace qel::log::analytics::serverconnection {

/// Posts packages to the analytics server over HTTPS. A status below 400 means that the server has
/// accepted the package.
class QEL_ANALYTICS_EXPORT DbToServerConnection : public DbToServerConnectionInterface {
 public:
  /// Uses the server that the build defines. `initalize` sets the user and the secret later.
  DbToServerConnection();

  void initalize(const parameters::ActivateParameter& parameter) override;
  bool send(items::ItemWrapper& package) override;

 private:
  qel::protocol::https::Message message_;  ///< reused for every package
};

}  // namespace qel::log::analytics::serverconnection
