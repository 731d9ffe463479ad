#pragma once

#include <string_view>

namespace qel::support {

/// Whether a file of this name was made by `qel-sample-host` itself: the installation's ID or one
/// of its log files, which contain refused packages.
bool isSampleHostFile(std::string_view name);

}  // namespace qel::support
