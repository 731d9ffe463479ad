#include "host/QelC/Texts.h"

#include <nlohmann/json.hpp>

#include "host/QelC/CallError.h"
#include "host/QelC/qel_analytics.h"

namespace qel::c {

std::string requiredText(const char* argument, const char* name) {
  if (argument == nullptr) {
    throw CallError(QEL_ANALYTICS_INVALID_ARGUMENT, std::string(name) + " is null");
  }
  std::string text(argument);
  try {
    nlohmann::json(text).dump();
  } catch (const nlohmann::json::exception&) {
    throw CallError(QEL_ANALYTICS_INVALID_ARGUMENT, std::string(name) + " is not UTF-8");
  }
  return text;
}

std::string optionalText(const char* argument, const char* name) {
  return argument == nullptr ? std::string() : requiredText(argument, name);
}

}  // namespace qel::c
