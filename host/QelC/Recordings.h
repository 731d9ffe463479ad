#pragma once

#include <string>
#include <vector>

#include "Application/Log/Analytics/Database/RecordedFiles.h"

namespace qel::c {

/// Removes what clients have recorded in the directory (UTF-8). Throws `qel::exception` with the
/// reason if a file remains.
void removeAllRecordings(const std::string& directory);

/// Throws `qel::exception` with the reason if one of the files remains.
void expectRemoved(const std::vector<log::analytics::RemovedFile>& files);

}  // namespace qel::c
