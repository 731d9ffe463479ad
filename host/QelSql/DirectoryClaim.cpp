#include "host/QelSql/DirectoryClaim.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <string>
#include <system_error>

#include "host/QelSql/LockFile.h"
#include "host/QelUtilities/Exception.h"
#include "host/QelUtilities/Mutex.h"
#include "host/QelUtilities/PathText.h"
#include "host/QelUtilities/Patience.h"
#include "host/QelUtilities/SystemError.h"

namespace qel::db::sql {
namespace {

using utilities::Patience;

/// Longer than any claim of a client that is being released, and far from an overflow of the clock.
constexpr std::chrono::hours longestWait{1};

std::string quoted(const std::filesystem::path& path) {
  return '"' + utilities::utf8FromPath(path) + '"';
}

struct SharedLock {
  explicit SharedLock(const std::filesystem::path& directory) : file(directory) {}

  LockFile file;
  int claims = 0;
  bool isExclusive = false;
};

class Claims {
 public:
  void add(const std::filesystem::path& directory, DirectoryClaim::Kind kind) {
    const bool exclusive = kind == DirectoryClaim::Kind::Exclusive;
    utilities::MutexLock lock(mutex_);
    if (exclusive) {
      waitUntilUnclaimed(lock, directory);
    }
    const auto [entry, isFirst] = byDirectory_.try_emplace(directory, directory);
    SharedLock& shared = entry->second;
    if (!isFirst && (shared.isExclusive || exclusive)) {
      throw qel::exception(quoted(directory) + " is in use by this program");
    }
    shared.isExclusive = exclusive;
    ++shared.claims;
  }

  void remove(const std::filesystem::path& directory) {
    const utilities::MutexLock lock(mutex_);
    const auto entry = byDirectory_.find(directory);
    if (--entry->second.claims == 0) {
      byDirectory_.erase(entry);
      changed_.notifyAll();
    }
  }

 private:
  /// Waits beyond the exit deadline, because recordings must be removable after it. The claims that
  /// are waited for end soon after it.
  void waitUntilUnclaimed(utilities::MutexLock& lock, const std::filesystem::path& directory)
      QEL_REQUIRES(mutex_) {
    const auto patience = std::min<Patience::Duration>(Patience::left(), longestWait);
    changed_.waitUntil(lock, std::chrono::steady_clock::now() + patience,
                       [&]() QEL_REQUIRES(mutex_) { return !byDirectory_.contains(directory); });
  }

  utilities::Mutex mutex_;
  utilities::Condition changed_;
  std::map<std::filesystem::path, SharedLock> byDirectory_ QEL_GUARDED_BY(mutex_);
};

// Never destroyed, because a detached thread may still release a database while the process exits.
Claims& claimsOfProcess() {
  static auto* const claims = new Claims;
  return *claims;
}

}  // namespace

DirectoryClaim::DirectoryClaim(const std::filesystem::path& directory, Kind kind) {
  std::error_code error;
  directory_ = utilities::canonicalDirectory(directory, error);
  if (error) {
    throw qel::exception("cannot keep databases in " + quoted(directory) + ": " +
                         utilities::systemMessage(error));
  }
  claimsOfProcess().add(directory_, kind);
}

DirectoryClaim::~DirectoryClaim() { claimsOfProcess().remove(directory_); }

}  // namespace qel::db::sql
