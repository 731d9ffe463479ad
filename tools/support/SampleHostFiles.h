#pragma once

#include <string_view>

namespace qel::support {

/// Whether `qel-sample-host` itself writes a file of this name: the installation ID or a log file.
/// The log files contain packages that the server rejected.
bool isSampleHostFile(std::string_view name);

}  // namespace qel::support
