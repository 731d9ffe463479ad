#pragma once

#include <string>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics::parameters {
struct ActivateParameter;
}

namespace qel::log::analytics::serverconnection {

/// The result of `tryConnection`.
struct ConnectionCheck {
  /// What is right, or the first thing that is wrong.
  enum class Result {
    Accepted,               ///< server, certificate and credentials are right
    CredentialsRefused,     ///< the server answered with status 401
    CertificateNotTrusted,  ///< or the certificate is for another name, or has expired
    NotReached,             ///< no answer in time, or no request could be made
    Refused                 ///< the server answered with another status from 300 on
  };

  Result result = Result::NotReached;  ///< for programs
  int status = 0;                      ///< of the server's answer; 0 if there was none
  std::string text;  ///< one sentence for people, with the server's name and without the secret
};

/// Finds out whether the client could send with the server, the user and the secret of the
/// parameter. Its other members are not used. Posts a package without rows, so the collector stores
/// nothing.
///
/// **Duration.** At most slightly longer than `Settings::connectTimeout` of the HTTPS connections.
///
/// **Errors.** Throws `qel::exception` if `serverHost` is not a host name. Failures of the network
/// are results.
///
/// **Threads.** Thread-safe; needs no client.
QEL_ANALYTICS_EXPORT ConnectionCheck tryConnection(const parameters::ActivateParameter& parameter);

}  // namespace qel::log::analytics::serverconnection
