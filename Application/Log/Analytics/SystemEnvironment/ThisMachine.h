#pragma once

#include <memory>

#include "Application/Log/Analytics/Items/EnvironmentItem.h"

namespace qel::log::analytics::systemenvironment {

/// Describes this machine, with `program` as its only and current application. Intended for
/// `ActivateParameter::createEnvironmentItem`.
///
/// **Facts.** Operating system, language, screen, graphics card, processor and memory. Names of the
/// user, the machine or the network are not among them. Unknown facts are empty.
///
/// **Program.** Three empty members of `program` are filled in: `exeDate` with the time when the
/// program's file was last modified, `language` with the user's language, and `bitness`.
///
/// `isInternal` marks machines of the program's vendor. Reads environment variables, so no other
/// thread may set one at the same time. Throws only `std::bad_alloc`.
QEL_ANALYTICS_EXPORT std::unique_ptr<items::EnvironmentItem> describeThisMachine(
    items::details::ApplicationInfo program, bool isInternal = false);

}  // namespace qel::log::analytics::systemenvironment
