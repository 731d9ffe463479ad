#pragma once

#include <memory>

#include "Application/Log/Analytics/Items/EnvironmentItem.h"

namespace qel::samplehost {

/// Describes this machine, and this program as the one application that is installed and running.
/// What cannot be found out stays empty.
std::unique_ptr<log::analytics::items::EnvironmentItem> createEnvironmentItem();

}  // namespace qel::samplehost
