#pragma once

#include <map>
#include <string>

#include "QelAnalyticsExport.h"
#include "host/QelJson/JsonObject.h"

namespace qel::log::analytics::items::details {

/// The machine's hardware.
class QEL_ANALYTICS_EXPORT HardwareEnvironmentInfo {
 public:
  HardwareEnvironmentInfo() = default;
  HardwareEnvironmentInfo(std::string cpu, std::string graphicCard,
                          std::map<std::string, std::string> memory);

  const std::string& getCpu() const { return cpu_; }
  const std::string& getGraphicCard() const { return graphicCard_; }
  /// Figures by their names.
  const std::map<std::string, std::string>& getMemory() const { return memory_; }

  json::JsonObject asJsonObject() const;

 private:
  std::string cpu_;
  std::string graphicCard_;
  std::map<std::string, std::string> memory_;
};

}  // namespace qel::log::analytics::items::details
