#pragma once

#include <string>

namespace qel::protocol::https {

/// A request to post.
struct Message {
  std::string host;  ///< the server's name in ASCII, without a port; its certificate must have it
  std::string path;  ///< begins with a slash; sent unchanged, may have a query but no fragment
  std::string contentType;  ///< the Content-Type header's value; empty: no such header
  std::string body;         ///< any bytes, sent unchanged
  std::string user;    ///< with the secret, Basic authentication (RFC 7617), so without a colon;
                       ///< both empty: none
  std::string secret;  ///< never written to a log, a message or a command line
  bool closeConnection = false;  ///< close the connection after the exchange instead of keeping it
};

}  // namespace qel::protocol::https
