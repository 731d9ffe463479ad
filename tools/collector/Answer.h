#pragma once

#include <chrono>
#include <string>

#include <httplib.h>

#include "tools/collector/PackageReader.h"

namespace qel::collector {

/// The answer to a request.
struct Answer {
  int status = 0;
  std::string text;  ///< for the log; for status 4xx also for the client
};

/// The answer to a stored package.
Answer storedAnswer(const Package& package);

void give(httplib::Response& response, const Answer& answer);

/// Logs one line about a request.
void logAnswer(const Answer& answer, const std::string& peer,
               std::chrono::steady_clock::duration duration);

}  // namespace qel::collector
