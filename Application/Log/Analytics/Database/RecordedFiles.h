#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string_view>
#include <system_error>
#include <vector>

#include "QelAnalyticsExport.h"

namespace qel::log::analytics {

/// Whether a file of this name (UTF-8) belongs to the host and goes with the recordings, such as
/// the host's log.
using HostFileFilter = std::function<bool(std::string_view name)>;

/// The files that clients have made in the directory, recognised by name: databases with their
/// journals, corrupt databases that were set aside, and the lock file. The list includes the files
/// that the filter accepts. It is sorted, with the lock file at its end.
///
/// Any thread may call, also while a client uses the directory. Throws `qel::exception` when the
/// directory cannot be read.
QEL_ANALYTICS_EXPORT std::vector<std::filesystem::path> recordedFiles(
    const std::filesystem::path& directory, const HostFileFilter& isHostFile = {});

/// The result of the removal of one file.
struct RemovedFile {
  std::filesystem::path file;  ///< as listed by `recordedFiles`
  std::uintmax_t size = 0;     ///< in bytes before the removal, 0 if unknown
  std::error_code error;       ///< why the file could not be removed, if so
};

/// Asked before anything of the list is removed. False keeps all files.
using RemovalApproval = std::function<bool(const std::vector<std::filesystem::path>& files)>;

/// Removes the `recordedFiles` of the directory and returns them in the same order. A file that
/// cannot be removed does not stop the removal of the others. The lock file, which the call creates
/// if there is none, is among them. Returns nothing if the approval is set and is refused.
///
/// **Lock.** The directory is locked during the call. Throws `qel::exception`, and removes nothing,
/// when a client of this or another process uses the directory, or when the directory cannot be
/// locked or read.
///
/// **Host.** Release the client before the call. If the client has a retention age, its retention
/// thread may use the directory a little longer: then the call throws and can be repeated.
///
/// **Threads.** Any thread may call. Filter and approval are called on this thread, under the lock,
/// and must not make a client use the directory.
QEL_ANALYTICS_EXPORT std::vector<RemovedFile> removeRecordings(
    const std::filesystem::path& directory, const HostFileFilter& isHostFile = {},
    const RemovalApproval& isApproved = {});

}  // namespace qel::log::analytics
