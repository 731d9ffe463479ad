#include "tools/records/Recordings.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"
#include "tools/common/InputError.h"
#include "tools/records/ClientDatabase.h"
#include "tools/records/CollectorStore.h"

namespace qel::records {
namespace {

std::vector<std::filesystem::path> filesIn(const std::filesystem::path& place) {
  std::error_code error;
  if (std::filesystem::is_regular_file(place, error)) {
    return {place};
  }
  const auto name = utilities::utf8FromPath(place);
  if (!std::filesystem::is_directory(place, error)) {
    throw tools::InputError("there is no file or directory \"" + name + '"');
  }
  std::vector<std::filesystem::path> files;
  for (const char* const fileName : {supportDatabaseName, sendingDatabaseName}) {
    const auto file = place / fileName;
    if (std::filesystem::exists(file, error) && std::filesystem::is_regular_file(file, error)) {
      files.push_back(file);
    }
  }
  if (error && files.empty()) {
    throw qel::exception("cannot look into " + name + ": " + utilities::systemMessage(error));
  }
  if (files.empty()) {
    throw tools::InputError(name + " holds neither " + supportDatabaseName + " nor " +
                            sendingDatabaseName);
  }
  return files;
}

std::unique_ptr<RecordFile> open(const std::filesystem::path& path,
                                 const std::filesystem::path& place,
                                 const ReadOnlyDatabase::Progress& progress) {
  auto database = std::make_unique<ReadOnlyDatabase>(path, progress);
  if (CollectorStore::isStore(*database)) {
    return std::make_unique<CollectorStore>(std::move(database));
  }
  const bool isGivenFile = path == place;
  if (isGivenFile && database->connection().whyUnreadable().empty() &&
      !ClientDatabase::isDatabase(*database)) {
    throw tools::InputError(utilities::utf8FromPath(path) +
                            " is neither a client's database nor a collector's store");
  }
  return std::make_unique<ClientDatabase>(std::move(database));
}

}  // namespace

Recordings::Recordings(std::filesystem::path where, const ReadOnlyDatabase::Progress& progress)
    : place(std::move(where)) {
  for (const auto& path : filesIn(place)) {
    files.push_back(open(path, place, progress));
    if (path.filename() == sendingDatabaseName) {
      sending = files.back().get();
    }
  }
  if (std::all_of(files.begin(), files.end(),
                  [](const auto& file) { return !file->whyUnreadable().empty(); })) {
    throw qel::exception("nothing can be read from " +
                         utilities::utf8FromPath(files.front()->path()) + ": " +
                         files.front()->whyUnreadable());
  }
}

std::vector<std::string> Recordings::remarks() const {
  std::vector<std::string> remarks;
  for (const auto& file : files) {
    const auto more = file->remarks();
    remarks.insert(remarks.end(), more.begin(), more.end());
  }
  return remarks;
}

}  // namespace qel::records
