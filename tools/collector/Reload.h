#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "host/QelUtilities/Mutex.h"

namespace qel::collector {

/// Files that are only valid together, for example a certificate and its key.
struct ReloadedFiles {
  std::string name;  ///< for the log
  std::vector<std::filesystem::path> files;
  /// Reads the files and hands over what they contain. Throws if that fails; then what was read
  /// before stays in use. Called on the thread of `Reload`.
  std::function<void()> load;
};

/// Reads files again when they have changed, or when `now` is called.
///
/// **Changes.** A changed file is read when it has stayed the same for one interval, so a file that
/// is just being written is not read.
///
/// **Log.** One line for each time that files are read, also for a failure. Files that cannot be
/// used are not read again until one of them changes or `now` is called.
///
/// **Threads.** All operations are thread-safe. The destructor waits for a load in progress.
class Reload {
 public:
  /// The files must have been loaded by the caller just before.
  explicit Reload(std::vector<ReloadedFiles> groups,
                  std::chrono::milliseconds interval = std::chrono::seconds(2));
  Reload(const Reload&) = delete;
  Reload& operator=(const Reload&) = delete;
  ~Reload();

  /// Makes the thread read all files, also unchanged ones.
  void now();

 private:
  /// What changes with a file: device, inode, size and times of each.
  using State = std::vector<std::int64_t>;
  struct Group {
    ReloadedFiles watched;
    State loaded;
    State seen;  ///< an interval ago
  };

  static State stateOf(const ReloadedFiles& watched);
  static void load(Group& group, const State& state);
  void run();

  const std::chrono::milliseconds interval_;
  std::vector<Group> groups_;  ///< used only on the thread after construction
  utilities::Mutex mutex_;
  utilities::Condition changed_;
  bool isRequested_ QEL_GUARDED_BY(mutex_) = false;
  bool isStopping_ QEL_GUARDED_BY(mutex_) = false;
  std::thread thread_;
};

}  // namespace qel::collector
