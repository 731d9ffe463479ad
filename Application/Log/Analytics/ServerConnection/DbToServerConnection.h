#pragma once

#include <string>

#include "Application/Log/Analytics/ServerConnection/DbToServerConnectionInterface.h"
#include "host/QelHttp/Message.h"

namespace qel::log::analytics::serverconnection {

/// Posts packages to the analytics server over HTTPS. A status below 400 means that the server has
/// accepted the package.
class QEL_ANALYTICS_EXPORT DbToServerConnection : public DbToServerConnectionInterface {
 public:
  /// Uses the server that the build defines. `initalize` sets another server, if the parameter has
  /// one, the user and the secret. It throws `qel::exception` if the server is not a host name.
  DbToServerConnection();

  void initalize(const parameters::ActivateParameter& parameter) override;
  bool send(items::ItemWrapper& package) override;
  /// The name of the server.
  const std::string& host() const { return message_.host; }
  /// The status of the last response to `send`; 0 if there was none. Not concurrently with `send`.
  int lastStatus() const { return lastStatus_; }

 private:
  qel::protocol::https::Message message_;  ///< reused for every package
  int lastStatus_ = 0;
};

}  // namespace qel::log::analytics::serverconnection
