#pragma once

#include "Application/Log/Analytics/ServerConnection/DbToServerConnectionInterface.h"
#include "host/QelHttp/Message.h"

namespace qel::log::analytics::serverconnection {

/// Posts packages to the deployment's analytics server over HTTPS. A status below 400 accepts.
class QEL_ANALYTICS_EXPORT DbToServerConnection : public DbToServerConnectionInterface {
 public:
  /// Knows the server, which the build names, but no user yet.
  DbToServerConnection();

  void initalize(const parameters::ActivateParameter& parameter) override;
  bool send(items::ItemWrapper& package) override;

 private:
  qel::protocol::https::Message message_;  ///< reused for every package
};

}  // namespace qel::log::analytics::serverconnection
