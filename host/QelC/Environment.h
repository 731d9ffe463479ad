#pragma once

#include <memory>
#include <string>

#include "Application/Log/Analytics/Items/EnvironmentItem.h"

namespace qel::c {

/// Reads the description of a machine: a JSON object with the members of the environment record,
/// each of which may be missing. `CurrentActiveApplication` is added to `InstalledApplications`
/// unless it is there. Returns null for an empty text. Throws `CallError`, which names the field,
/// if the text is invalid.
std::unique_ptr<log::analytics::items::EnvironmentItem> readEnvironment(const std::string& json);

/// A description of this machine and of the program, in the form that `readEnvironment` reads.
std::string describeMachine(const std::string& program, const std::string& version);

}  // namespace qel::c
