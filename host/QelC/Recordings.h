#pragma once

#include <string>

namespace qel::c {

/// Removes what clients have recorded in the directory (UTF-8). Throws `qel::exception` with the
/// reason if a file remains.
void removeAllRecordings(const std::string& directory);

}  // namespace qel::c
