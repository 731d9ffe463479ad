#include "tools/support/Purge.h"

#include <cstdint>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

#include "host/QelSql/DirectoryClaim.h"
#include "host/QelUtilities/PathText.h"
#include "tools/common/InputError.h"
#include "tools/support/DisplayText.h"
#include "tools/support/RecordedFiles.h"
#include "tools/support/Terminal.h"

namespace qel::support {
namespace {

std::uintmax_t sizeOf(const std::filesystem::path& file) {
  std::error_code unreadable;
  const auto size = std::filesystem::file_size(file, unreadable);
  return unreadable ? 0 : size;
}

std::string amount(const std::vector<std::filesystem::path>& files) {
  std::uintmax_t bytes = 0;
  for (const auto& file : files) {
    bytes += sizeOf(file);
  }
  return std::to_string(files.size()) + (files.size() == 1 ? " file, " : " files, ") +
         readableSize(bytes);
}

bool remove(const std::filesystem::path& file, std::ostream& output) {
  const auto size = readableSize(sizeOf(file));
  const auto name = printable(utilities::utf8FromPath(file.filename()));
  std::error_code error;
  std::filesystem::remove(file, error);
  if (error) {
    std::cerr << "qel-support: cannot remove " << name << ": " << error.message() << '\n';
    return false;
  }
  output << "removed " << name << " (" << size << ")\n";
  return true;
}

db::sql::DirectoryClaim claimed(const std::filesystem::path& directory) {
  try {
    return db::sql::DirectoryClaim(directory);
  } catch (const qel::exception& failure) {
    throw qel::exception(std::string("nothing was removed: ") + failure.what());
  }
}

}  // namespace

bool purge(const std::filesystem::path& directory, bool asked, std::ostream& output) {
  const auto place = printable(utilities::utf8FromPath(directory));
  std::error_code error;
  if (!std::filesystem::is_directory(directory, error)) {
    throw tools::InputError("there is no directory " + place);
  }
  auto files = recordedFiles(directory);
  if (files.empty()) {
    output << "nothing is recorded in " << place << '\n';
    return true;
  }
  if (!asked && !canAsk()) {
    throw tools::InputError("there is no terminal to ask on: give --yes to remove " +
                            amount(files) + " from " + place);
  }
  const auto lock = directory / db::sql::DirectoryClaim::lockFileName;
  const bool wasLockFileThere = std::filesystem::exists(lock, error);
  const auto claim = claimed(directory);
  files = recordedFiles(directory);
  const auto total = amount(files);
  if (!asked && !confirmed("Remove all that is recorded in " + place + " (" + total + ")?")) {
    if (!wasLockFileThere) {
      std::filesystem::remove(lock, error);
    }
    output << "nothing was removed\n";
    return false;
  }
  bool complete = true;
  for (const auto& file : files) {
    complete = remove(file, output) && complete;
  }
  if (complete) {
    output << "all that was recorded in " << place << " is removed: " << total << '\n';
  }
  return complete;
}

}  // namespace qel::support
