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
  /// `isCurrent` is set for the application that hosts this client. The rest is the host's choice;
  /// texts, lists and maps may be empty.
  QelEnvironmentInfo(ApplicationInfo application, bool isCurrent, std::string webUpdate,
                     std::vector<std::string> userFiles,
                     std::map<std::string, std::string> iniFiles,
                     std::map<std::string, std::string> startSettings);

  /// Name, version and program file.
  const ApplicationInfo& application() const { return application_; }
  /// Whether it is the one that hosts this client; not rendered.
  bool isCurrent() const { return isCurrent_; }
  /// Its web update, in the host's words.
  const std::string& getWebupdate() const { return webUpdate_; }
  /// The user's files of it, as the host names them.
  const std::vector<std::string>& getUserFiles() const { return userFiles_; }
  /// What is known of its configuration files and of the settings that it starts with, by names of
  /// the host's choice.
  /// @{
  const std::map<std::string, std::string>& getIniFiles() const { return iniFiles_; }
  const std::map<std::string, std::string>& getStartSettings() const { return startSettings_; }
  /// @}

  /// The members of the application, then "WebUpdate", "UserFiles", "IniFiles" and "StartSettings",
  /// in this order and always all of them.
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
