#include "tools/support/NewFile.h"

#include <cerrno>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"
#include "tools/common/CommandLine.h"

namespace qel::support {
namespace {

bool writeAll(int file, std::string_view content) {
  while (!content.empty()) {
    const auto written = ::write(file, content.data(), content.size());
    if (written < 0 && errno != EINTR) {
      return false;
    }
    content.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

void writeNewFile(const std::filesystem::path& file, const std::string& content) {
  const auto name = utilities::utf8FromPath(file);
  const int descriptor =
      ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (descriptor == -1 && errno == EEXIST) {
    throw tools::InputError("--output: there is already " + name);
  }
  const bool complete = descriptor != -1 && writeAll(descriptor, content);
  const int error = errno;
  const bool closed = descriptor != -1 && ::close(descriptor) == 0;
  if (complete && closed) {
    return;
  }
  if (descriptor != -1) {
    ::unlink(file.c_str());
  }
  throw qel::exception("cannot write " + name + ": " +
                       std::system_category().message(complete ? errno : error));
}

}  // namespace qel::support
