#include "Application/Log/Analytics/Items/details/HardwareEnvironmentInfo.h"

#include <utility>

namespace qel::log::analytics::items::details {

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
