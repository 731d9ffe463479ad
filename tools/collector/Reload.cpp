#include "tools/collector/Reload.h"

#include <exception>
#include <utility>

#include <sys/stat.h>

#include "host/QelLog/LogManager.h"
#include "host/QelUtilities/PathText.h"
#include "tools/common/InputError.h"

namespace qel::collector {

namespace {

using utilities::MutexLock;

/// Reading another kind of file could wait for ever.
void requireRegularFiles(const std::vector<std::filesystem::path>& files) {
  for (const auto& file : files) {
    if (std::filesystem::exists(file) && !std::filesystem::is_regular_file(file)) {
      throw tools::InputError(utilities::utf8FromPath(file) + " is not a regular file");
    }
  }
}

}  // namespace

Reload::Reload(std::vector<ReloadedFiles> groups, std::chrono::milliseconds interval)
    : interval_(interval) {
  for (ReloadedFiles& watched : groups) {
    State state = stateOf(watched);
    groups_.push_back({std::move(watched), state, state});
  }
  thread_ = std::thread([this] { run(); });
}

Reload::~Reload() {
  {
    const MutexLock lock(mutex_);
    isStopping_ = true;
    changed_.notifyAll();
  }
  thread_.join();
}

void Reload::now() {
  const MutexLock lock(mutex_);
  isRequested_ = true;
  changed_.notifyAll();
}

Reload::State Reload::stateOf(const ReloadedFiles& watched) {
  State state;
  for (const auto& file : watched.files) {
    struct stat found {};
    if (::stat(file.c_str(), &found) != 0) {
      found = {};
    }
    state.insert(state.end(),
                 {static_cast<std::int64_t>(found.st_dev), static_cast<std::int64_t>(found.st_ino),
                  found.st_size, found.st_mtim.tv_sec, found.st_mtim.tv_nsec, found.st_ctim.tv_sec,
                  found.st_ctim.tv_nsec});
  }
  return state;
}

void Reload::load(Group& group, const State& state) {
  const auto logger = log::LogManager::instance().getLogger("qel.collector");
  // A change during the load differs from this state, so the files are read once more.
  group.loaded = state;
  try {
    requireRegularFiles(group.watched.files);
    group.watched.load();
    logger->log(log::Level::Info, "read the " + group.watched.name + " again");
  } catch (const std::exception& error) {
    logger->log(log::Level::Error, "keeps the old " + group.watched.name + ": " + error.what());
  }
}

void Reload::run() {
  for (;;) {
    bool isRequested = false;
    {
      MutexLock lock(mutex_);
      changed_.waitUntil(lock, std::chrono::steady_clock::now() + interval_,
                         [this]() QEL_REQUIRES(mutex_) { return isRequested_ || isStopping_; });
      if (isStopping_) {
        return;
      }
      isRequested = std::exchange(isRequested_, false);
    }
    for (Group& group : groups_) {
      State state = stateOf(group.watched);
      if (isRequested || (state != group.loaded && state == group.seen)) {
        load(group, state);
      }
      group.seen = std::move(state);
    }
  }
}

}  // namespace qel::collector
