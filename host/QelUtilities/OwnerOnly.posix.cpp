#include "host/QelUtilities/OwnerOnly.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/QelUtilities/SystemError.h"

namespace qel::utilities {
namespace {

/// Reports why nothing was created. An existing file is no error.
bool notCreated(std::error_code& error) {
  error = lastSystemError();
  if (error == std::errc::file_exists) {
    error.clear();
  }
  return false;
}

}  // namespace

/// An existing file is not opened here. Closing it would release the locks that other connections
/// of this process have on the file.
bool createForOwnerAlone(const std::filesystem::path& file, std::error_code& error) {
  const int created =
      open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (created == -1) {
    return notCreated(error);
  }
  close(created);
  error.clear();
  return true;
}

bool createDirectoryForOwnerAlone(const std::filesystem::path& directory, std::error_code& error) {
  if (mkdir(directory.c_str(), S_IRWXU) == -1) {
    return notCreated(error);
  }
  error.clear();
  return true;
}

}  // namespace qel::utilities
