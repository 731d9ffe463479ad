#include "Application/Log/Analytics/Items/details/ApplicationInformation.h"

#include <utility>

namespace qel::log::analytics::items::details {

json::JsonObject ApplicationInfo::asJsonObject() const {
  json::JsonObject json;
  json.addString("Name", name)
      .addString("Version", version)
      .addString("ExeVersion", exeVersion)
      .addString("ExeDate", exeDate)
      .addString("ExeConfig", exeConfig)
      .addString("Language", language)
      .addString("Bitness", bitness);
  return json;
}

QelEnvironmentInfo::QelEnvironmentInfo(ApplicationInfo application, bool isCurrent,
                                       std::string webUpdate, std::vector<std::string> userFiles,
                                       std::map<std::string, std::string> iniFiles,
                                       std::map<std::string, std::string> startSettings)
    : application_(std::move(application)),
      isCurrent_(isCurrent),
      webUpdate_(std::move(webUpdate)),
      userFiles_(std::move(userFiles)),
      iniFiles_(std::move(iniFiles)),
      startSettings_(std::move(startSettings)) {}

json::JsonObject QelEnvironmentInfo::asJsonObject() const {
  json::JsonObject json = application_.asJsonObject();
  json.addString("WebUpdate", webUpdate_)
      .addStringVector("UserFiles", userFiles_)
      .addStringMap("IniFiles", iniFiles_)
      .addStringMap("StartSettings", startSettings_);
  return json;
}

}  // namespace qel::log::analytics::items::details
