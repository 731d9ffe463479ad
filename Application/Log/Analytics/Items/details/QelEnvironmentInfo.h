#pragma once

#include <map>
#include <string>
#include <vector>

#include "Application/Log/Analytics/Items/details/ApplicationInfo.h"
#include "QelAnalyticsExport.h"
#include "host/QelJson/JsonObject.h"

namespace qel::log::analytics::items::details {

/// One installed host application and how it is set up.
class QEL_ANALYTICS_EXPORT QelEnvironmentInfo {
 public:
  QelEnvironmentInfo(ApplicationInfo application, bool isCurrent, std::string webUpdate,
                     std::vector<std::string> userFiles,
                     std::map<std::string, std::string> iniFiles,
                     std::map<std::string, std::string> startSettings);

  const ApplicationInfo& application() const { return application_; }
  /// Whether it is the one that hosts this client; not rendered.
  bool isCurrent() const { return isCurrent_; }
  const std::string& getWebupdate() const { return webUpdate_; }
  const std::vector<std::string>& getUserFiles() const { return userFiles_; }
  const std::map<std::string, std::string>& getIniFiles() const { return iniFiles_; }
  const std::map<std::string, std::string>& getStartSettings() const { return startSettings_; }

  json::JsonObject asJsonObject() const;

 private:
  ApplicationInfo application_;
  bool isCurrent_;
  std::string webUpdate_;
  std::vector<std::string> userFiles_;
  std::map<std::string, std::string> iniFiles_;
  std::map<std::string, std::string> startSettings_;
};

}  // namespace qel::log::analytics::items::details
