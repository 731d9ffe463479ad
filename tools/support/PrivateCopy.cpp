#include "tools/support/PrivateCopy.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <set>
#include <string>
#include <system_error>
#include <thread>

#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/PathText.h"

namespace qel::support {
namespace {

struct Directories {
  std::mutex mutex;
  std::set<std::filesystem::path> paths;  // guarded by mutex
};

// Never destroyed: the thread that waits for signals lives as long as the process.
Directories& directories() {
  static auto* const instance = new Directories;
  return *instance;
}

/// Begins anew where another thread has put something into it meanwhile, but not for ever: a
/// network share keeps open files under other names.
void removeAll(const std::filesystem::path& directory) {
  constexpr int mostAttempts = 100;
  std::error_code error = std::make_error_code(std::errc::directory_not_empty);
  for (int i = 0; i < mostAttempts && error == std::errc::directory_not_empty; ++i) {
    std::filesystem::remove_all(directory, error);
  }
}

bool isIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

std::filesystem::path placeOfCopies() {
  std::error_code error;
  auto place = std::filesystem::temp_directory_path(error);
  if (error) {
    throw qel::exception("there is no place for a private copy: TMPDIR names no directory");
  }
  return place;
}

void unblock(const sigset_t& signals) { pthread_sigmask(SIG_UNBLOCK, &signals, nullptr); }

}  // namespace

void PrivateDirectory::removeAllOnSignals() {
  sigset_t ending;
  sigemptyset(&ending);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    if (!isIgnored(signal)) {  // It would be waited for all the same.
      sigaddset(&ending, signal);
    }
  }
  sigset_t blocked = ending;
  sigaddset(&blocked, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
  std::thread([ending] {
    int signal = 0;
    sigwait(&ending, &signal);
    // Held to the end, so that no directory is made behind it.
    const std::lock_guard lock(directories().mutex);
    for (const auto& path : directories().paths) {
      removeAll(path);
    }
    unblock(ending);
    raise(signal);
  }).detach();
}

void PrivateDirectory::diesOfClosedPipe() {
  sigset_t pipe;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  unblock(pipe);
}

PrivateDirectory::PrivateDirectory(const std::filesystem::path& parent) {
  std::string pattern = utilities::utf8FromPath(parent / ".qel-support-XXXXXX");
  const std::lock_guard lock(directories().mutex);
  if (mkdtemp(pattern.data()) == nullptr) {
    throw qel::exception("cannot write in " + utilities::utf8FromPath(parent) + ": " +
                         std::system_category().message(errno));
  }
  path_ = utilities::pathFromUtf8(pattern);
  directories().paths.insert(path_);
}

PrivateDirectory::~PrivateDirectory() {
  removeAll(path_);
  const std::lock_guard lock(directories().mutex);
  directories().paths.erase(path_);
}

PrivateCopy::PrivateCopy(const std::filesystem::path& file)
    : directory_(placeOfCopies()), file_(directory_.path() / file.filename()) {
  try {
    for (const char* const suffix : {"", "-journal", "-wal"}) {
      const auto original = std::filesystem::path(file) += suffix;
      if (std::filesystem::exists(original)) {
        const auto copy = std::filesystem::path(file_) += suffix;
        std::filesystem::copy_file(original, copy);
        // What lies in a place that is not to be written is often not writable itself.
        std::filesystem::permissions(copy, std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add);
      }
    }
  } catch (const std::filesystem::filesystem_error& failure) {
    throw qel::exception("cannot make a private copy of " + utilities::utf8FromPath(file) + ": " +
                         failure.code().message());
  }
}

}  // namespace qel::support
