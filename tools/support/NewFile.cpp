#include "tools/support/NewFile.h"

#include <fstream>
#include <system_error>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/OwnerOnly.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/SystemError.h"
#include "tools/common/DelayedInterruption.h"
#include "tools/common/InputError.h"

namespace qel::support {
namespace {

/// Returns why the content could not be written, or no error.
std::error_code overwrite(const std::filesystem::path& file, const std::string& content) {
  std::ofstream stream(file, std::ios::binary);
  if (stream << content << std::flush) {
    stream.close();
  }
  const auto reason = utilities::lastSystemError();
  return stream ? std::error_code() : reason;
}

}  // namespace

void writeNewFile(const std::filesystem::path& file, const std::string& content) {
  const auto name = utilities::utf8FromPath(file);
  const tools::DelayedInterruption untilComplete;
  std::error_code error;
  const bool isNew = utilities::createForOwnerAlone(file, error);
  if (!isNew && !error) {
    throw tools::InputError("--output: there is already " + name);
  }
  if (isNew) {
    error = overwrite(file, content);
  }
  if (error) {
    std::error_code ignored;
    if (isNew) {
      std::filesystem::remove(file, ignored);
    }
    throw qel::exception("cannot write " + name + ": " + utilities::systemMessage(error));
  }
}

}  // namespace qel::support
