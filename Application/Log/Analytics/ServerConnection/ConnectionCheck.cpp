#include "Application/Log/Analytics/ServerConnection/ConnectionCheck.h"

#include <chrono>
#include <vector>

#include "Application/Log/Analytics/ServerConnection/DbToServerConnection.h"
#include "host/QelHttp/Client.h"
#include "host/QelHttp/Settings.h"
#include "host/QelUtilities/Patience.h"

namespace qel::log::analytics::serverconnection {
namespace {

using Result = ConnectionCheck::Result;

/// A package for no table has no rows, but is posted.
constexpr auto noTable = static_cast<CipDatabaseClientInterface::Table>(2);

ConnectionCheck checkOfStatus(const std::string& host, int status) {
  const auto number = std::to_string(status);
  if (status == 401) {
    return {Result::CredentialsRefused, status,
            host + " was reached, but refused the user or the secret (status 401)."};
  }
  if (status >= 300) {
    return {Result::Refused, status,
            host + " was reached, but answered with status " + number + '.'};
  }
  return {Result::Accepted, status,
          host + " was reached and accepted the credentials (status " + number + ")."};
}

}  // namespace

ConnectionCheck tryConnection(const parameters::ActivateParameter& parameter) {
  using protocol::https::Error;
  using utilities::Patience;
  DbToServerConnection connection;
  connection.initalize(parameter);
  const std::vector<const std::string*> none;
  items::ItemWrapper package(none, noTable);
  const Patience::StopTime end(std::chrono::steady_clock::now() +
                               protocol::https::getSettings().connectTimeout);
  const Patience patience(Patience::unlimited, end);
  try {
    connection.send(package);
    return checkOfStatus(connection.host(), connection.lastStatus());
  } catch (const Error& failure) {
    const std::string reason = failure.what();
    if (failure.cause() == Error::Cause::Certificate) {
      return {Result::CertificateNotTrusted, 0,
              "The server's certificate is not trusted: " + reason};
    }
    return {Result::NotReached, 0,
            Patience::mustStop() ? connection.host() + " did not answer in time."
                                 : "There was no answer: " + reason};
  }
}

}  // namespace qel::log::analytics::serverconnection
