#include "Application/Log/Analytics/Database/RecordedFiles.h"

#include <algorithm>
#include <string>

#include "Application/Log/Analytics/Database/DatabaseFormat.h"
#include "host/QelSql/DirectoryClaim.h"
#include "host/QelSql/FileNames.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"

namespace qel::log::analytics {
namespace {

bool isFileOf(std::string_view database, std::string_view name) {
  if (!name.starts_with(database)) {
    return false;
  }
  const auto suffix = name.substr(database.size());
  const auto& companions = db::sql::companionSuffixes;
  return suffix.empty() || suffix.starts_with(db::sql::setAsideMark) ||
         std::find(companions.begin(), companions.end(), suffix) != companions.end();
}

std::vector<std::filesystem::path> filesWhoseName(const std::filesystem::path& directory,
                                                  const HostFileFilter& fits) {
  std::vector<std::filesystem::path> files;
  try {
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
      if (!entry.is_directory() && fits(utilities::utf8FromPath(entry.path().filename()))) {
        files.push_back(entry.path());
      }
    }
  } catch (const std::filesystem::filesystem_error& failure) {
    throw qel::exception("cannot look into " + utilities::utf8FromPath(directory) + ": " +
                         failure.code().message());
  }
  std::sort(files.begin(), files.end());
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
  auto files = filesWhoseName(directory, [&](std::string_view name) {
    return isFileOf(format::sendingDatabase, name) || isFileOf(format::supportDatabase, name) ||
           (isHostFile && isHostFile(name));
  });
  const auto lock = filesWhoseName(
      directory, [](std::string_view name) { return name == db::sql::lockFileName; });
  files.insert(files.end(), lock.begin(), lock.end());
  return files;
}

std::vector<RemovedFile> removeRecordings(const std::filesystem::path& directory,
                                          const HostFileFilter& isHostFile) {
  using db::sql::DirectoryClaim;
  const DirectoryClaim claim(directory, DirectoryClaim::Kind::Exclusive);
  std::vector<RemovedFile> removed;
  for (const auto& file : recordedFiles(directory, isHostFile)) {
    removed.push_back(removeFile(file));
  }
  return removed;
}

}  // namespace qel::log::analytics
