#include "tools/support/Purge.h"

#include <cstdint>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

#include "Application/Log/Analytics/Database/RecordedFiles.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"
#include "tools/common/InputError.h"
#include "tools/report/DisplayText.h"
#include "tools/support/SampleHostFiles.h"
#include "tools/support/Terminal.h"

namespace qel::support {
namespace {

using log::analytics::RemovedFile;

std::string amount(std::size_t files, std::uintmax_t bytes) {
  return std::to_string(files) + (files == 1 ? " file, " : " files, ") +
         report::readableSize(bytes);
}

std::string amount(const std::vector<std::filesystem::path>& files) {
  std::uintmax_t bytes = 0;
  for (const auto& file : files) {
    std::error_code unreadable;
    const auto size = std::filesystem::file_size(file, unreadable);
    bytes += unreadable ? 0 : size;
  }
  return amount(files.size(), bytes);
}

bool report(const std::vector<RemovedFile>& removed, const std::string& place,
            std::ostream& output) {
  bool isComplete = true;
  std::uintmax_t bytes = 0;
  for (const auto& [file, size, error] : removed) {
    const auto name = report::printable(utilities::utf8FromPath(file.filename()));
    if (error) {
      std::cerr << "qel-support: cannot remove " << name << ": " << utilities::systemMessage(error)
                << '\n';
      isComplete = false;
    } else {
      output << "removed " << name << " (" << report::readableSize(size) << ")\n";
    }
    bytes += size;
  }
  if (isComplete) {
    output << "all that was recorded in " << place
           << " is removed: " << amount(removed.size(), bytes) << '\n';
  }
  return isComplete;
}

}  // namespace

bool purge(const std::filesystem::path& directory, bool asked, std::ostream& output) {
  const auto place = report::printable(utilities::utf8FromPath(directory));
  std::error_code error;
  if (std::filesystem::is_regular_file(directory, error)) {
    throw tools::InputError(place +
                            " is a file: purge removes all recordings in a directory, and " +
                            "qel-collector erase removes records from a collector's store");
  }
  if (!std::filesystem::is_directory(directory, error)) {
    throw tools::InputError("there is no directory " + place);
  }
  const auto files = log::analytics::recordedFiles(directory, isSampleHostFile);
  if (files.empty()) {
    output << "nothing is recorded in " << place << '\n';
    return true;
  }
  if (!asked && !canAsk()) {
    throw tools::InputError("there is no terminal to ask on: give --yes to remove " +
                            amount(files) + " from " + place);
  }
  const auto isConfirmed = [&](const std::vector<std::filesystem::path>& found) {
    return asked ||
           confirmed("Remove all that is recorded in " + place + " (" + amount(found) + ")?");
  };
  std::vector<RemovedFile> removed;
  try {
    removed = log::analytics::removeRecordings(directory, isSampleHostFile, isConfirmed);
  } catch (const qel::exception& failure) {
    throw qel::exception(std::string("nothing was removed: ") + failure.what());
  }
  if (removed.empty()) {
    output << "nothing was removed\n";
    return false;
  }
  return report(removed, place, output);
}

}  // namespace qel::support
