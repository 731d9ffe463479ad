#pragma once

#include <filesystem>
#include <string>

#include "Application/Log/Analytics/Items/EnvironmentItem.h"

/// What the system says about this machine. Unknown facts are empty.
namespace qel::samplehost {

log::analytics::items::details::OsEnvironmentInfo operatingSystem();
log::analytics::items::details::HardwareEnvironmentInfo hardware();

/// The user's language, for example "de_DE" on Linux and "de-DE" on Windows.
std::string language();

/// The file of this program.
std::filesystem::path programFile();

/// The number of bits of an address in this program.
inline std::string bitness() { return std::to_string(sizeof(void*) * 8); }

}  // namespace qel::samplehost
