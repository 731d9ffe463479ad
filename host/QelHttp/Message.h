#pragma once

#include <string>

namespace qel::protocol::https {

/// One request to be posted.
struct Message {
  std::string host;  ///< name of the server in ASCII, no port; its certificate must bear it
  std::string path;  ///< beginning with a slash; taken as it is, with a query but no fragment
  std::string contentType;  ///< the Content-Type header's value; empty: no such header
  std::string body;         ///< any bytes, sent as they are
  std::string user;    ///< with the secret, Basic authentication (RFC 7617), so without a colon;
                       ///< both empty: none
  std::string secret;  ///< never written to a log, a message or a command line
  bool closeConnection =
      false;  ///< end the connection after the exchange instead of keeping it for the next
};

}  // namespace qel::protocol::https
