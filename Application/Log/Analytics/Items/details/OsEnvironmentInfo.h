#pragma once

#include <string>

#include "QelAnalyticsExport.h"
#include "host/QelJson/JsonObject.h"

namespace qel::log::analytics::items::details {

/// The operating system and the screen that the program runs on.
class QEL_ANALYTICS_EXPORT OsEnvironmentInfo {
 public:
  /// In texts of the host's choice, empty where nothing is known.
  OsEnvironmentInfo(std::string name, std::string bitness, std::string language,
                    std::string buildNumber, bool isTerminalServer, std::string screenResolution,
                    int screenDpi, std::string graphicCardDriver);

  /// The operating system's.
  /// @{
  const std::string& getName() const { return name_; }
  const std::string& getBitness() const { return bitness_; }
  const std::string& getLanguage() const { return language_; }
  const std::string& getBuildNumber() const { return buildNumber_; }
  /// @}
  /// Whether the system is a terminal server.
  bool isTerminalServer() const { return isTerminalServer_; }
  /// For example "1920x1080".
  const std::string& getScreenResolution() const { return screenResolution_; }
  /// Dots per inch.
  int getScreenDpi() const { return screenDpi_; }
  /// The driver's name or version, as the host has it.
  const std::string& getGraphicCardDriver() const { return graphicCardDriver_; }

  /// The members "Name", "Bitness", "Language", "BuildNumber", "IsTerminalServer",
  /// "ScreenResolution", "ScreenDPI" (a number) and "GraphicCardDriver", in this order and always
  /// all of them.
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

}  // namespace qel::log::analytics::items::details
