#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "tools/collector/Store.h"

namespace qel::collector {

inline std::string package(const std::string& environments, const std::string& events) {
  return R"({"version": "3.1", "environments": [)" + environments + R"(], "events": [)" + events +
         "]}";
}

inline std::string withEvents(const std::string& rows) {
  return R"({"version": "3.1", "events": [)" + rows + "]}";
}

inline Uploads uploadsOf(const std::string& body, const std::string& user = "ada") {
  return {std::make_shared<const Upload>(body, user)};
}

inline std::chrono::steady_clock::time_point soon() {
  return std::chrono::steady_clock::now() + std::chrono::seconds(10);
}

}  // namespace qel::collector
