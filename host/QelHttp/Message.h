#pragma once

#include <string>

namespace qel::protocol::https {

/// One request to be posted.
struct Message {
  std::string host;         ///< name of the server; its certificate must bear it
  std::string path;         ///< beginning with a slash
  std::string contentType;  ///< the Content-Type header's value
  std::string body;
  std::string user;    ///< with the secret, Basic authentication (RFC 7617); both empty: none
  std::string secret;  ///< never written to a log, a message or a command line
  bool closeConnection =
      false;  ///< end the connection after the exchange instead of keeping it for the next
};

}  // namespace qel::protocol::https
