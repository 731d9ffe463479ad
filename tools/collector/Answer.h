#pragma once

#include <chrono>
#include <string>

#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>

#include "tools/collector/PackageReader.h"

namespace qel::collector {

/// The answer to a request.
struct Answer {
  int status = 0;
  std::string text;                     ///< for the log; for status 4xx also for the client
  std::chrono::seconds retryAfter{30};  ///< for status 429 and 503
};

/// The answer to a stored package.
Answer storedAnswer(const Package& package);

using Response = boost::beast::http::response<boost::beast::http::string_body>;
Response toResponse(const Answer& answer, bool keepsConnection);

/// Logs one line about a request.
void logAnswer(const Answer& answer, const std::string& peer,
               std::chrono::steady_clock::duration duration);

/// Logs one line about a connection that was cut or did not come about.
void logCut(const std::string& reason, const std::string& peer);

}  // namespace qel::collector
