#pragma once

namespace qel::protocol::http {

/// The server's answer to a request; its body is not kept.
struct Response {
  int statusCode = 0;
};

}  // namespace qel::protocol::http
