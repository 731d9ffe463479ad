#pragma once

#include <map>
#include <memory>
#include <string>

#include "Application/Log/Analytics/Items/CommandItem.h"

namespace qel::benchmarks {

using Details = std::map<std::string, std::string>;

/// As many rows as make a sending database of the largest size that it grows to.
constexpr int rowsOfFullDatabase = 97'500;

inline std::string commandText() { return "CreatePipeAlongRoute"; }

/// The six details of a typical command; the number tells one command from the next.
inline Details commandDetails(int number) {
  Details details;
  details.emplace("Number", std::to_string(1'000'000 + number));
  details.emplace("Floor", "2");
  details.emplace("View", "Plan");
  details.emplace("Size", "DN 20");
  details.emplace("System", "Heating");
  details.emplace("Ms", "150");
  return details;
}

/// What a host's thread makes of a command: about 300 bytes when rendered, with six texts beside
/// the details.
inline std::unique_ptr<log::analytics::items::CommandItem> makeItem(int number) {
  using log::analytics::items::CommandItem;
  return std::make_unique<CommandItem>(commandText(), CommandItem::State::Accepted,
                                       commandDetails(number));
}

/// Gives items the ids that make their texts as long as in practice.
inline void identifyProcess() {
  using log::analytics::items::BaseItem;
  BaseItem::setInstallationId("QEL-20417731");
  BaseItem::setSessionId(Guid::parse("00112233-4455-6677-8899-AABBCCDDEEFF"));
}

}  // namespace qel::benchmarks
