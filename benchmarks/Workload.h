#pragma once

#include <map>
#include <memory>
#include <string>

#include "Application/Log/Analytics/Items/CommandItem.h"

namespace qel::benchmarks {

using Details = std::map<std::string, std::string>;

/// The number of rows that fill a sending database up to its size limit.
constexpr int rowsOfFullDatabase = 97'500;

inline std::string commandText() { return "CreatePipeOnRoute"; }

/// The six details of a typical command. `number` makes each command different.
inline Details commandDetails(int number) {
  Details details;
  details.emplace("No", std::to_string(100'000 + number));
  details.emplace("At", "2");
  details.emplace("View", "3D");
  details.emplace("DN", "20");
  details.emplace("Type", "Heat");
  details.emplace("Ms", "15");
  return details;
}

/// The item of a typical command. Its rendered form has about 300 bytes: six strings and the
/// details.
inline std::unique_ptr<log::analytics::items::CommandItem> makeItem(int number) {
  using log::analytics::items::CommandItem;
  return std::make_unique<CommandItem>(commandText(), CommandItem::State::Started,
                                       commandDetails(number));
}

/// Sets typical installation and session IDs, so that rendered items are as long as in practice.
inline void identifyProcess() {
  using log::analytics::items::BaseItem;
  BaseItem::setInstallationId("QEL-20417");
  BaseItem::setSessionId(Guid::parse("00112233-4455-6677-8899-AABBCCDDEEFF"));
}

}  // namespace qel::benchmarks
