#pragma once

#include <map>
#include <string>
#include <vector>

#include "QelAnalyticsExport.h"
#include "host/QelJson/JsonObject.h"

namespace qel::log::analytics::items::details {

/// One installed host application. The host chooses the strings, and any of them may be empty.
struct QEL_ANALYTICS_EXPORT ApplicationInfo {
  /// Name and version of the application.
  /// @{
  std::string name;
  std::string version;
  /// @}
  /// Version, date and build configuration (such as "Release") of the executable file.
  /// @{
  std::string exeVersion;
  std::string exeDate;
  std::string exeConfig;
  /// @}
  /// The language and the bitness in the host's notation, such as "de_DE" and "64".
  /// @{
  std::string language;
  std::string bitness;
  /// @}

  /// A JSON object with the members "Name", "Version", "ExeVersion", "ExeDate", "ExeConfig",
  /// "Language" and "Bitness", always all of them in this order.
  json::JsonObject asJsonObject() const;
};

/// One installed host application and its configuration.
class QEL_ANALYTICS_EXPORT QelEnvironmentInfo {
 public:
  /// `isCurrent` marks the application that hosts this client. The host chooses the other values.
  /// Strings, lists and maps may be empty.
  QelEnvironmentInfo(ApplicationInfo application, bool isCurrent, std::string webUpdate,
                     std::vector<std::string> userFiles,
                     std::map<std::string, std::string> iniFiles,
                     std::map<std::string, std::string> startSettings);

  /// Name, version and executable file.
  const ApplicationInfo& application() const { return application_; }
  /// Whether the application hosts this client. Not rendered.
  bool isCurrent() const { return isCurrent_; }
  /// The web update of the application.
  const std::string& getWebupdate() const { return webUpdate_; }
  /// The user's files of the application.
  const std::vector<std::string>& getUserFiles() const { return userFiles_; }
  /// Facts about configuration files and start settings, keyed by names that the host chooses.
  /// @{
  const std::map<std::string, std::string>& getIniFiles() const { return iniFiles_; }
  const std::map<std::string, std::string>& getStartSettings() const { return startSettings_; }
  /// @}

  /// A JSON object with the members of the application, then "WebUpdate", "UserFiles", "IniFiles"
  /// and "StartSettings", always all of them in this order.
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
