#pragma once

#include <string>

#include "QelAnalyticsExport.h"
#include "host/QelJson/JsonObject.h"

namespace qel::log::analytics::items::details {

/// The operating system and the session that the program runs in.
class QEL_ANALYTICS_EXPORT OsEnvironmentInfo {
 public:
  OsEnvironmentInfo(std::string name, std::string bitness, std::string language,
                    std::string buildNumber, bool isTerminalServer, std::string screenResolution,
                    int screenDpi, std::string graphicCardDriver);

  const std::string& getName() const { return name_; }
  const std::string& getBitness() const { return bitness_; }
  const std::string& getLanguage() const { return language_; }
  const std::string& getBuildNumber() const { return buildNumber_; }
  bool isTerminalServer() const { return isTerminalServer_; }
  const std::string& getScreenResolution() const { return screenResolution_; }
  int getScreenDpi() const { return screenDpi_; }
  const std::string& getGraphicCardDriver() const { return graphicCardDriver_; }

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
