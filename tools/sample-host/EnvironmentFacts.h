#pragma once

#include <memory>

#include "Application/Log/Analytics/Items/EnvironmentItem.h"

namespace qel::samplehost {

/// Describes this machine, and this program as its only application. Unknown facts stay empty.
std::unique_ptr<log::analytics::items::EnvironmentItem> createEnvironmentItem();

}  // namespace qel::samplehost
