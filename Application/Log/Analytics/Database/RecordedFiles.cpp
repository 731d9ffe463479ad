#include "Application/Log/Analytics/Database/RecordedFiles.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>

#include "Application/Log/Analytics/Database/DatabaseFormat.h"
#include "host/QelSql/DirectoryClaim.h"
#include "host/QelSql/FileNames.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/Patience.h"
#include "host/QelUtilities/ScopeGuard.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::log::analytics {
namespace {

/// A client that was released may use the directory for a little longer, to delete old rows.
constexpr std::chrono::seconds longestRelease{2};

bool isFileOf(std::string_view database, std::string_view name) {
  if (!name.starts_with(database)) {
    return false;
  }
  const auto suffix = name.substr(database.size());
  const auto& companions = db::sql::companionSuffixes;
  return suffix.empty() || suffix.starts_with(db::sql::setAsideMark) ||
         std::find(companions.begin(), companions.end(), suffix) != companions.end();
}

std::vector<std::filesystem::path> filesIn(const std::filesystem::path& directory) {
  std::vector<std::filesystem::path> files;
  try {
    for (const auto& entry : std::filesystem::directory_iterator(utilities::plainPath(directory))) {
      if (!entry.is_directory()) {
        files.push_back(entry.path());
      }
    }
  } catch (const std::filesystem::filesystem_error& failure) {
    throw qel::exception("cannot look into " + utilities::utf8FromPath(directory) + ": " +
                         utilities::systemMessage(failure.code()));
  }
  return files;
}

RemovedFile removeFile(const std::filesystem::path& file) {
  std::error_code error;
  auto size = std::filesystem::file_size(file, error);
  size = error ? 0 : size;
  std::filesystem::remove(file, error);
  return {file, size, error};
}

}  // namespace

std::vector<std::filesystem::path> recordedFiles(const std::filesystem::path& directory,
                                                 const HostFileFilter& isHostFile) {
  const auto isLock = [](const std::filesystem::path& file) {
    return file.filename() == db::sql::lockFileName;
  };
  auto files = filesIn(directory);
  std::erase_if(files, [&](const std::filesystem::path& file) {
    const auto name = utilities::utf8FromPath(file.filename());
    return !isLock(file) && !isFileOf(format::sendingDatabase, name) &&
           !isFileOf(format::supportDatabase, name) && !(isHostFile && isHostFile(name));
  });
  std::sort(files.begin(), files.end(), [&](const auto& left, const auto& right) {
    return std::pair(isLock(left), left) < std::pair(isLock(right), right);
  });
  return files;
}

std::vector<RemovedFile> removeRecordings(const std::filesystem::path& directory,
                                          const HostFileFilter& isHostFile,
                                          const RemovalApproval& isApproved) {
  using db::sql::DirectoryClaim;
  const auto lock = utilities::plainPath(directory) / db::sql::lockFileName;
  std::error_code ignored;
  const bool wasLockFileThere = std::filesystem::exists(lock, ignored);
  const utilities::Patience patience(longestRelease);
  const DirectoryClaim claim(directory, DirectoryClaim::Kind::Exclusive);
  const ScopeGuard removingNewLockFile([&] {
    if (!wasLockFileThere) {
      std::filesystem::remove(lock, ignored);
    }
  });
  const auto files = recordedFiles(directory, isHostFile);
  if (isApproved && !isApproved(files)) {
    return {};
  }
  std::vector<RemovedFile> removed;
  removed.reserve(files.size());
  for (const auto& file : files) {
    removed.push_back(removeFile(file));
  }
  return removed;
}

}  // namespace qel::log::analytics
