#include "tools/support/RecordedFiles.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>
#include <system_error>

#include "host/QelSql/DirectoryClaim.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "tools/support/Recordings.h"

namespace qel::support {
namespace {

constexpr std::string_view asideMark = ".corrupt-";
constexpr std::string_view logStem = "qel-sample-host";
constexpr std::string_view installationIdName = "installation-id";  ///< made by qel-sample-host

/// What follows a database's name in the file's name; nothing when it begins otherwise.
std::string_view behindDatabaseName(std::string_view name) {
  for (const std::string_view database : {supportDatabaseName, sendingDatabaseName}) {
    if (name.starts_with(database)) {
      return name.substr(database.size());
    }
  }
  return "/";
}

bool isAside(std::string_view name) { return behindDatabaseName(name).starts_with(asideMark); }

bool isDatabase(std::string_view name) {
  const auto rest = behindDatabaseName(name);
  return rest.empty() || rest == "-journal" || rest == "-wal" || rest == "-shm";
}

/// "qel-sample-host.log", or an older one: "qel-sample-host.1.log".
bool isLog(std::string_view name) {
  if (!name.starts_with(logStem)) {
    return false;
  }
  name.remove_prefix(logStem.size());
  if (name == ".log") {
    return true;
  }
  return name.size() > 5 && name.front() == '.' && name.ends_with(".log") &&
         std::all_of(name.begin() + 1, name.end() - 4, [](char digit) {
           return std::isdigit(static_cast<unsigned char>(digit)) != 0;
         });
}

template <typename Predicate>
std::vector<std::filesystem::path> filesWhoseName(const std::filesystem::path& directory,
                                                  const Predicate& fits) {
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

}  // namespace

std::vector<std::filesystem::path> filesSetAside(const std::filesystem::path& directory) {
  return filesWhoseName(directory, [](const std::string& name) { return isAside(name); });
}

std::vector<std::filesystem::path> recordedFiles(const std::filesystem::path& directory) {
  const auto isLock = [](const std::string& name) {
    return name == db::sql::DirectoryClaim::lockFileName;
  };
  auto files = filesWhoseName(directory, [](const std::string& name) {
    return isAside(name) || isDatabase(name) || isLog(name) || name == installationIdName;
  });
  const auto lock = filesWhoseName(directory, isLock);
  files.insert(files.end(), lock.begin(), lock.end());
  return files;
}

}  // namespace qel::support
