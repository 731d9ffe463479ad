#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string_view>
#include <system_error>
#include <vector>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics {

/// Returns true for a file of the host that must be listed and removed with the recordings, such as
/// the host's log. The name is UTF-8.
using HostFileFilter = std::function<bool(std::string_view name)>;

/// The files that clients have created in the directory, recognised by name. These are databases
/// with their journals, corrupt databases that were set aside (the date is appended to the name),
/// and the lock file. The list also includes the files that the filter accepts. It is sorted by
/// path, with the lock file last.
///
/// Thread-safe; may be called while a client uses the directory. Throws `qel::exception` if the
/// directory cannot be read.
QEL_ANALYTICS_EXPORT std::vector<std::filesystem::path> recordedFiles(
    const std::filesystem::path& directory, const HostFileFilter& isHostFile = {});

/// The result of removing one file.
struct RemovedFile {
  std::filesystem::path file;  ///< as listed by `recordedFiles`
  std::uintmax_t size = 0;     ///< in bytes before the removal, 0 if unknown
  std::error_code error;       ///< the reason if the removal failed
};

/// Called with the list before any file is removed. If it returns false, all files are kept.
using RemovalApproval = std::function<bool(const std::vector<std::filesystem::path>& files)>;

/// Removes the `recordedFiles` of the directory and returns the results in the same order. If a
/// file cannot be removed, the call continues with the other files. The call creates the lock file
/// if there is none, and removes it with the other files. Returns an empty list if `isApproved` is
/// set and returns false.
///
/// **Lock.** The directory is locked during the call. Throws `qel::exception`, and removes nothing,
/// if a client of this or another process uses the directory, or if the directory cannot be locked
/// or read.
///
/// **Host.** The client must be released before the call. Afterwards, a retention thread may still
/// delete old rows for up to a second, or until the exit deadline. The call waits for it, for at
/// most two seconds.
///
/// **Threads.** Thread-safe. The filter and the approval function are called on the calling thread
/// while the directory is locked. They must not make a client use the directory.
QEL_ANALYTICS_EXPORT std::vector<RemovedFile> removeRecordings(
    const std::filesystem::path& directory, const HostFileFilter& isHostFile = {},
    const RemovalApproval& isApproved = {});

}  // namespace qel::log::analytics
