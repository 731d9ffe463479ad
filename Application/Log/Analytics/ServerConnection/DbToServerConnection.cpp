#include "Application/Log/Analytics/ServerConnection/DbToServerConnection.h"

#include "Application/Log/Analytics/Client/ActivateParameter.h"
#include "Application/Log/Analytics/Items/PackageFormat.h"
#include "Application/Log/Analytics/ServerConnection/HostName.h"
#include "host/QelHttp/Client.h"
#include "host/QelUtilities/Exception.h"

namespace qel::log::analytics::serverconnection {
namespace {

static_assert(isHostName(QEL_ANALYTICS_SERVER_HOST),
              "the CMake variable QEL_ANALYTICS_SERVER_HOST is not a host name");

/// A negative status is converted to a large number and therefore counts as rejected.
bool accepts(int statusCode) { return static_cast<unsigned int>(statusCode) < 400; }

}  // namespace

void requireHostName(const std::string& serverHost) {
  if (!serverHost.empty() && !isHostName(serverHost)) {
    throw qel::exception("serverHost: " + complaintAboutHostName(serverHost));
  }
}

DbToServerConnection::DbToServerConnection()
    : message_{.host = QEL_ANALYTICS_SERVER_HOST,
               .path = format::uploadPath,
               .contentType = format::uploadContentType,
               .body = {},
               .user = {},
               .secret = {},
               .closeConnection = false} {}

void DbToServerConnection::initalize(const parameters::ActivateParameter& parameter) {
  requireHostName(parameter.serverHost);
  if (!parameter.serverHost.empty()) {
    message_.host = parameter.serverHost;
  }
  message_.user = parameter.serverUser;
  message_.secret = parameter.serverSecret;
}

bool DbToServerConnection::send(items::ItemWrapper& package) {
  if (package.isNullOrEmpty()) {
    return false;
  }
  package.writeTo(message_.body);
  protocol::https::Client client;
  lastStatus_ = client.post(message_).statusCode;
  return accepts(lastStatus_);
}

}  // namespace qel::log::analytics::serverconnection
