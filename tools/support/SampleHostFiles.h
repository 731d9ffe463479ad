#pragma once

#include <string_view>

namespace qel::support {

/// Whether a file of this name was made by `qel-sample-host` itself: one of its log files, in which
/// refused packages stand whole, or the installation's id.
bool isSampleHostFile(std::string_view name);

}  // namespace qel::support
