#pragma once

#include <map>
#include <string>

#include "QelAnalyticsExport.h"
#include "host/QelJson/JsonObject.h"

namespace qel::log::analytics::items::details {

/// The machine's hardware.
class QEL_ANALYTICS_EXPORT HardwareEnvironmentInfo {
 public:
  /// In texts of the host's choice, empty where nothing is known. `memory` holds figures with their
  /// units, by names of the host's choice.
  /// @{
  HardwareEnvironmentInfo() = default;
  HardwareEnvironmentInfo(std::string cpu, std::string graphicCard,
                          std::map<std::string, std::string> memory);
  /// @}

  /// The model, in the host's words.
  /// @{
  const std::string& getCpu() const { return cpu_; }
  const std::string& getGraphicCard() const { return graphicCard_; }
  /// @}
  /// Figures by their names.
  const std::map<std::string, std::string>& getMemory() const { return memory_; }

  /// The members "GraphicCard", "CPU" and "Memory", in this order and always all of them.
  json::JsonObject asJsonObject() const;

 private:
  std::string cpu_;
  std::string graphicCard_;
  std::map<std::string, std::string> memory_;
};

}  // namespace qel::log::analytics::items::details
