#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string_view>
#include <system_error>
#include <vector>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics {

/// Whether a file of this name (UTF-8) is the host's own and goes with the recordings, such as the
/// host's log.
using HostFileFilter = std::function<bool(std::string_view name)>;

/// The files in which clients have recorded something in the directory: the databases with their
/// journals, corrupt databases that were set aside, and last the lock file. Files that the filter
/// accepts are listed before the lock file.
///
/// Files are known by their names. The list is sorted and empty if nothing was recorded. Any thread
/// may call, also while a client uses the directory. Throws `qel::exception` when the directory
/// cannot be read.
QEL_ANALYTICS_EXPORT std::vector<std::filesystem::path> recordedFiles(
    const std::filesystem::path& directory, const HostFileFilter& isHostFile = {});

/// What became of a file that was to be removed.
struct RemovedFile {
  std::filesystem::path file;
  std::uintmax_t size = 0;  ///< in bytes before the removal, 0 if unknown
  std::error_code error;    ///< why the file could not be removed, if so
};

/// Removes the `recordedFiles` of the directory, and returns them in the same order.
///
/// The directory is locked meanwhile. Throws `qel::exception` and removes nothing when a client of
/// this or of another process uses it, when it cannot be locked or cannot be read. A host therefore
/// releases its client first. With a retention age, the client's last thread may use the directory
/// for a moment longer; the call can be repeated.
///
/// A file that cannot be removed does not keep the others. Any thread may call. The filter is asked
/// on the calling thread and must not use the directory.
QEL_ANALYTICS_EXPORT std::vector<RemovedFile> removeRecordings(
    const std::filesystem::path& directory, const HostFileFilter& isHostFile = {});

}  // namespace qel::log::analytics
