#include "Application/Log/Analytics/Items/details/ApplicationInfo.h"

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

}  // namespace qel::log::analytics::items::details
