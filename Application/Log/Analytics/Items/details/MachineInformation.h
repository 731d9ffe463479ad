#pragma once

#include <map>
#include <string>

#include "QelAnalyticsExport.h"
#include "host/QelJson/JsonObject.h"

namespace qel::log::analytics::items::details {

/// The operating system and the screen. The host chooses the strings, and any of them may be empty.
class QEL_ANALYTICS_EXPORT OsEnvironmentInfo {
 public:
  /// Sets all values.
  OsEnvironmentInfo(std::string name, std::string bitness, std::string language,
                    std::string buildNumber, bool isTerminalServer, std::string screenResolution,
                    int screenDpi, std::string graphicCardDriver);

  /// The operating system.
  /// @{
  const std::string& getName() const { return name_; }
  const std::string& getBitness() const { return bitness_; }
  const std::string& getLanguage() const { return language_; }
  const std::string& getBuildNumber() const { return buildNumber_; }
  /// @}
  /// Whether the system is a terminal server.
  bool isTerminalServer() const { return isTerminalServer_; }
  /// The resolution in pixels, for example "1920x1080".
  const std::string& getScreenResolution() const { return screenResolution_; }
  /// The screen density in dots per inch.
  int getScreenDpi() const { return screenDpi_; }
  /// Name or version of the graphics driver.
  const std::string& getGraphicCardDriver() const { return graphicCardDriver_; }

  /// A JSON object with the members "Name", "Bitness", "Language", "BuildNumber",
  /// "IsTerminalServer", "ScreenResolution", "ScreenDPI" (a number) and "GraphicCardDriver", always
  /// all of them in this order.
  json::JsonObject asJsonObject() const;

 private:
  std::string name_;
  std::string bitness_;
  std::string language_;
  std::string buildNumber_;
  bool isTerminalServer_;
  std::string screenResolution_;
  int screenDpi_;
  std::string graphicCardDriver_;
};

/// The machine's hardware. The host chooses the strings, and any of them may be empty.
class QEL_ANALYTICS_EXPORT HardwareEnvironmentInfo {
 public:
  /// `memory` maps names to sizes with their units.
  /// @{
  HardwareEnvironmentInfo() = default;
  HardwareEnvironmentInfo(std::string cpu, std::string graphicCard,
                          std::map<std::string, std::string> memory);
  /// @}

  /// The model of the processor or of the graphics card.
  /// @{
  const std::string& getCpu() const { return cpu_; }
  const std::string& getGraphicCard() const { return graphicCard_; }
  /// @}
  /// Sizes with their units, keyed by name.
  const std::map<std::string, std::string>& getMemory() const { return memory_; }

  /// A JSON object with the members "GraphicCard", "CPU" and "Memory", always all of them in this
  /// order.
  json::JsonObject asJsonObject() const;

 private:
  std::string cpu_;
  std::string graphicCard_;
  std::map<std::string, std::string> memory_;
};

}  // namespace qel::log::analytics::items::details
