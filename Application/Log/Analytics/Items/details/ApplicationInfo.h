#pragma once

#include <string>

#include "QelAnalyticsExport.h"
#include "host/QelJson/JsonObject.h"

namespace qel::log::analytics::items::details {

/// One installed host application.
struct QEL_ANALYTICS_EXPORT ApplicationInfo {
  std::string name;
  std::string version;
  std::string exeVersion;
  std::string exeDate;
  std::string exeConfig;
  std::string language;
  std::string bitness;

  json::JsonObject asJsonObject() const;
};

}  // namespace qel::log::analytics::items::details
