#pragma once

namespace qel::protocol::http {

/// The server's answer to a request, without its body.
struct Response {
  int statusCode = 0;  ///< of the final answer, from 200 on; below 400 the request was accepted
};

}  // namespace qel::protocol::http
