#pragma once

#include <chrono>
#include <string>

#include "tools/collector/StoreReader.h"

namespace qel::collector {

/// The ID of the only session that begins with this text, or is equal to it. Case, hyphens and
/// braces do not count. The text must have at least four digits of a GUID.
///
/// Throws `ApiError` with 404 if there is no such session, and with 409 if there are several, and
/// `StoreError`.
std::string idBeginningWith(const std::string& text, StoreReader& reader,
                            std::chrono::steady_clock::time_point deadline);

}  // namespace qel::collector
