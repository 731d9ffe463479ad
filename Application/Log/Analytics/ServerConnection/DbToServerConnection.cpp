#include "Application/Log/Analytics/ServerConnection/DbToServerConnection.h"

#include "Application/Log/Analytics/Client/ActivateParameter.h"
#include "Application/Log/Analytics/Items/PackageFormat.h"
#include "host/QelHttp/Client.h"

namespace qel::log::analytics::serverconnection {
namespace {

/// A negative status is converted to a large number and therefore counts as rejected.
bool accepts(int statusCode) { return static_cast<unsigned int>(statusCode) < 400; }

}  // namespace

DbToServerConnection::DbToServerConnection()
    : message_{.host = QEL_ANALYTICS_SERVER_HOST,
               .path = format::uploadPath,
               .contentType = format::uploadContentType,
               .body = {},
               .user = {},
               .secret = {},
               .closeConnection = false} {}

void DbToServerConnection::initalize(const parameters::ActivateParameter& parameter) {
  message_.user = parameter.serverUser;
  message_.secret = parameter.serverSecret;
}

bool DbToServerConnection::send(items::ItemWrapper& package) {
  if (package.isNullOrEmpty()) {
    return false;
  }
  package.writeTo(message_.body);
  protocol::https::Client client;
  return accepts(client.post(message_).statusCode);
}

}  // namespace qel::log::analytics::serverconnection
