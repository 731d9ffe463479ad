#pragma once

#include <string>

namespace qel::protocol::https {

/// A POST request.
struct Message {
  std::string host;  ///< the server's name in ASCII as in its certificate, without a port
  std::string path;  ///< begins with a slash; sent unchanged, may have a query but no fragment
  std::string contentType;  ///< the Content-Type header's value; if empty, no such header is sent
  std::string body;         ///< any bytes, sent unchanged
  std::string user;    ///< user name for Basic authentication (RFC 7617), without a colon; if it
                       ///< and the secret are empty, there is no authentication
  std::string secret;  ///< password; never written to a log, an error message or a command line
  bool closeConnection = false;  ///< close the connection after the exchange instead of keeping it
};

}  // namespace qel::protocol::https
