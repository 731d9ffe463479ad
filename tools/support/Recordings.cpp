#include "tools/support/Recordings.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"
#include "tools/common/InputError.h"

namespace qel::support {

Recordings::Recordings(std::filesystem::path place, const ReadOnlyDatabase::Progress& progress)
    : directory(std::move(place)) {
  std::error_code error;
  const auto name = utilities::utf8FromPath(directory);
  if (!std::filesystem::is_directory(directory, error)) {
    throw tools::InputError("there is no directory " + name);
  }
  const auto openIfThere = [&](const char* fileName, std::optional<ReadOnlyDatabase>& database) {
    const auto file = directory / fileName;
    if (std::filesystem::exists(file, error) && std::filesystem::is_regular_file(file, error)) {
      database.emplace(file, progress);
    }
  };
  openIfThere(supportDatabaseName, support);
  openIfThere(sendingDatabaseName, sending);
  if (error && !support && !sending) {
    throw qel::exception("cannot look into " + name + ": " + utilities::systemMessage(error));
  }
  if (!support && !sending) {
    throw tools::InputError(name + " holds neither " + supportDatabaseName + " nor " +
                            sendingDatabaseName);
  }
  const auto there = databases();
  if (std::all_of(there.begin(), there.end(),
                  [](const auto* database) { return !database->whyUnreadable().empty(); })) {
    throw qel::exception("nothing can be read from " +
                         utilities::utf8FromPath(there.front()->file()) + ": " +
                         there.front()->whyUnreadable());
  }
}

std::vector<ReadOnlyDatabase*> Recordings::databases() {
  std::vector<ReadOnlyDatabase*> there;
  for (auto* const database : {&support, &sending}) {
    if (*database) {
      there.push_back(&**database);
    }
  }
  return there;
}

std::vector<std::string> Recordings::remarks() const {
  std::vector<std::string> remarks;
  for (const auto* const database : {&support, &sending}) {
    if (*database) {
      const auto more = (*database)->remarks();
      remarks.insert(remarks.end(), more.begin(), more.end());
    }
  }
  return remarks;
}

}  // namespace qel::support
