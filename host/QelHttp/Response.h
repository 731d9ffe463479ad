#pragma once

namespace qel::protocol::http {

/// The server's response to a request, without its body.
struct Response {
  /// The status of the final response, at least 200. A status below 400 means that the request was
  /// accepted.
  int statusCode = 0;
};

}  // namespace qel::protocol::http
