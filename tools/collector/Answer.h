#pragma once

#include <chrono>
#include <string>

#include <httplib.h>

#include "tools/collector/PackageReader.h"

namespace qel::collector {

/// What a request is answered.
struct Answer {
  int status = 0;
  std::string text;  ///< for the log, and for the client when the fault is its own
};

/// The answer to a package that was stored.
Answer storedAnswer(const Package& package);

void give(httplib::Response& response, const Answer& answer);

/// Writes the line about a request to the log.
void logAnswer(const Answer& answer, const std::string& peer,
               std::chrono::steady_clock::duration duration);

}  // namespace qel::collector
