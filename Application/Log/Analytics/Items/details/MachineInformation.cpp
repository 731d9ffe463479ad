#include "Application/Log/Analytics/Items/details/MachineInformation.h"

#include <utility>

namespace qel::log::analytics::items::details {

OsEnvironmentInfo::OsEnvironmentInfo(std::string name, std::string bitness, std::string language,
                                     std::string buildNumber, bool isTerminalServer,
                                     std::string screenResolution, int screenDpi,
                                     std::string graphicCardDriver)
    : name_(std::move(name)),
      bitness_(std::move(bitness)),
      language_(std::move(language)),
      buildNumber_(std::move(buildNumber)),
      isTerminalServer_(isTerminalServer),
      screenResolution_(std::move(screenResolution)),
      screenDpi_(screenDpi),
      graphicCardDriver_(std::move(graphicCardDriver)) {}

json::JsonObject OsEnvironmentInfo::asJsonObject() const {
  json::JsonObject json;
  json.addString("Name", name_)
      .addString("Bitness", bitness_)
      .addString("Language", language_)
      .addString("BuildNumber", buildNumber_)
      .addBool("IsTerminalServer", isTerminalServer_)
      .addString("ScreenResolution", screenResolution_)
      .addDouble("ScreenDPI", screenDpi_)
      .addString("GraphicCardDriver", graphicCardDriver_);
  return json;
}

HardwareEnvironmentInfo::HardwareEnvironmentInfo(std::string cpu, std::string graphicCard,
                                                 std::map<std::string, std::string> memory)
    : cpu_(std::move(cpu)), graphicCard_(std::move(graphicCard)), memory_(std::move(memory)) {}

json::JsonObject HardwareEnvironmentInfo::asJsonObject() const {
  json::JsonObject json;
  json.addString("GraphicCard", graphicCard_)
      .addString("CPU", cpu_)
      .addStringMap("Memory", memory_);
  return json;
}

}  // namespace qel::log::analytics::items::details
