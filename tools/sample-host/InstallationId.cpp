#include "tools/sample-host/InstallationId.h"

#include <fstream>

#include "host/QelId/Guid.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/OwnerOnly.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"
#include "tools/common/SampleHostFileNames.h"

namespace qel::samplehost {

std::string installationIdOf(const std::filesystem::path& directory) {
  const auto file = directory / tools::installationIdFile;
  std::string id;
  if (std::ifstream kept(file); std::getline(kept, id) && !id.empty()) {
    return id;
  }
  id = qel::Guid::create().toString(false);
  try {
    std::error_code error;
    utilities::createForOwnerAlone(file, error);
    if (error) {
      throw qel::exception(utilities::systemMessage(error));
    }
    std::ofstream made(file);
    made.exceptions(std::ios::badbit | std::ios::failbit);
    made << id << std::endl;
  } catch (const std::exception& failure) {
    throw qel::exception("cannot write " + utilities::utf8FromPath(file) + ": " + failure.what());
  }
  return id;
}

}  // namespace qel::samplehost
