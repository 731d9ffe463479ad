#pragma once

#include <string>

#include "QelAnalyticsExport.h"
#include "host/QelJson/JsonObject.h"

namespace qel::log::analytics::items::details {

/// One installed host application, in texts of the host's choice. Any of them may be empty.
struct QEL_ANALYTICS_EXPORT ApplicationInfo {
  /// The application's own, not its program file's.
  /// @{
  std::string name;
  std::string version;
  /// @}
  /// Its program file's; the configuration is that of its build, such as "Release".
  /// @{
  std::string exeVersion;
  std::string exeDate;
  std::string exeConfig;
  /// @}
  /// In the host's form, such as "de_DE" and "64".
  /// @{
  std::string language;
  std::string bitness;
  /// @}

  /// The members "Name", "Version", "ExeVersion", "ExeDate", "ExeConfig", "Language" and "Bitness",
  /// in this order and always all of them.
  json::JsonObject asJsonObject() const;
};

}  // namespace qel::log::analytics::items::details
