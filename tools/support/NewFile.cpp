#include "tools/support/NewFile.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "tools/common/InputError.h"

namespace qel::support {

void writeNewFile(const std::filesystem::path& file, const std::string& content) {
  const auto name = utilities::utf8FromPath(file);
  const auto failure = [&name](int error) {
    return qel::exception("cannot write " + name + ": " + std::system_category().message(error));
  };
  std::FILE* const stream = std::fopen(file.c_str(), "wx");
  if (stream == nullptr && errno == EEXIST) {
    throw tools::InputError("--output: there is already " + name);
  }
  if (stream == nullptr) {
    throw failure(errno);
  }
  const bool written = std::fwrite(content.data(), 1, content.size(), stream) == content.size() &&
                       std::fflush(stream) == 0;
  const int error = errno;
  const bool closed = std::fclose(stream) == 0;
  if (!written || !closed) {
    const int reason = written ? errno : error;
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    throw failure(reason);
  }
}

}  // namespace qel::support
