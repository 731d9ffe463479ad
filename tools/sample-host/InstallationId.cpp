#include "tools/sample-host/InstallationId.h"

#include <fstream>

#include "host/QelId/Guid.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/OwnerOnly.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"
#include "tools/common/ByteOrderMark.h"
#include "tools/common/SampleHostFileNames.h"

namespace qel::samplehost {
namespace {

/// The first line of the file, whatever its line ends are; empty if there is none.
std::string firstLineOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string line;
  std::getline(stream, line);
  tools::removeByteOrderMark(line);
  if (line.ends_with('\r')) {
    line.pop_back();
  }
  return line;
}

}  // namespace

std::string installationIdOf(const std::filesystem::path& directory) {
  const auto file = directory / tools::installationIdFile;
  auto id = firstLineOf(file);
  if (!id.empty()) {
    return id;
  }
  id = qel::Guid::create().toString(false);
  try {
    std::error_code error;
    utilities::createForOwnerAlone(file, error);
    if (error) {
      throw qel::exception(utilities::systemMessage(error));
    }
    std::ofstream made(file, std::ios::binary);
    made.exceptions(std::ios::badbit | std::ios::failbit);
    made << id << std::endl;
  } catch (const std::exception& failure) {
    throw qel::exception("cannot write " + utilities::utf8FromPath(file) + ": " + failure.what());
  }
  return id;
}

}  // namespace qel::samplehost
