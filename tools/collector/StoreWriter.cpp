#include "tools/collector/StoreWriter.h"

#include <algorithm>
#include <string>
#include <vector>

#include "host/QelLog/LogManager.h"

namespace qel::collector {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

/// The pause after a failed transaction until a check, which is a transaction without packages.
constexpr auto pauseAfterFailure = 2s;

/// The pauses between deletions of old rows: while there are more of them, and otherwise.
constexpr auto shortPause = 50ms;
constexpr auto longPause = 10min;

std::size_t rowsOf(const Upload& upload) {
  const Package& package = upload.package;
  return package.environments.size() + package.events.size() + package.refused.size();
}

}  // namespace

StoreWriter::StoreWriter(Store& store, const WriterSettings& settings)
    : store_(store),
      settings_(settings),
      largestWrite_(settings.largestWrite),
      nextRemoval_(settings.retention ? steady_clock::now() : steady_clock::time_point::max()),
      nextCheck_(steady_clock::now() + settings.idleTime),
      thread_([this] { run(); }) {}

StoreWriter::~StoreWriter() {
  {
    const utilities::MutexLock lock(mutex_);
    isStopping_ = true;
    changed_.notifyAll();
  }
  thread_.join();
  const auto failure = std::make_exception_ptr(StoreError("the collector stops"));
  for (const auto& item : waiting_) {
    item.done(failure);
  }
}

void StoreWriter::add(std::shared_ptr<const Upload> upload, Done done) {
  const utilities::MutexLock lock(mutex_);
  waitingRows_ += rowsOf(*upload);
  waiting_.push_back({std::move(upload), std::move(done), steady_clock::now()});
  changed_.notifyAll();
}

bool StoreWriter::isReady() const {
  const utilities::MutexLock lock(mutex_);
  return !isFailing_ && (!deadline_ || steady_clock::now() <= *deadline_);
}

std::size_t StoreWriter::queued() const {
  const utilities::MutexLock lock(mutex_);
  return waiting_.size();
}

void StoreWriter::run() {
  while (const auto batch = nextBatch()) {
    if (!batch->empty() || steady_clock::now() >= nextCheck_) {
      store(*batch);
    }
    if (steady_clock::now() >= nextRemoval_) {
      removeOldRows();
    }
  }
}

/// Waits for packages, at most until something else is to be done. Null when the writer stops.
std::optional<StoreWriter::Batch> StoreWriter::nextBatch() {
  utilities::MutexLock lock(mutex_);
  changed_.waitUntil(lock, std::min(nextRemoval_, nextCheck_),
                     [this]() QEL_REQUIRES(mutex_) { return isStopping_ || !waiting_.empty(); });
  waitForRows(lock);
  if (isStopping_) {
    return std::nullopt;
  }
  Batch batch;
  std::size_t bytes = 0;
  while (!waiting_.empty()) {
    bytes += waiting_.front().upload->size();
    if (!batch.empty() && bytes > largestWrite_) {
      break;
    }
    waitingRows_ -= rowsOf(*waiting_.front().upload);
    batch.push_back(std::move(waiting_.front()));
    waiting_.pop_front();
  }
  return batch;
}

/// Waits until the packages that wait make a large transaction, or the first has waited long.
void StoreWriter::waitForRows(utilities::MutexLock& lock) {
  if (!waiting_.empty()) {
    changed_.waitUntil(lock, waiting_.front().arrival + settings_.batchTime,
                       [this]() QEL_REQUIRES(mutex_) {
                         return isStopping_ || waitingRows_ >= settings_.batchRows;
                       });
  }
}

void StoreWriter::store(const Batch& batch) {
  Uploads uploads;
  for (const auto& item : batch) {
    uploads.push_back(item.upload);
  }
  const auto deadline = steady_clock::now() + settings_.longestWrite;
  const Result result = attempt(uploads, deadline);
  if (result.isFaultOfUploads && batch.size() > 1) {
    for (const auto& item : batch) {
      item.done(attempt({item.upload}, deadline).failure);
    }
    return;
  }
  // A smaller transaction may succeed on a slow disk.
  largestWrite_ = result.failure ? std::max(largestWrite_ / 2, settings_.largestWrite / 1024)
                                 : std::min(settings_.largestWrite, 2 * largestWrite_);
  for (const auto& item : batch) {
    item.done(result.failure);
  }
}

StoreWriter::Result StoreWriter::attempt(const Uploads& uploads,
                                         steady_clock::time_point deadline) {
  {
    const utilities::MutexLock lock(mutex_);
    deadline_ = deadline;
  }
  Result result;
  try {
    store_.add(uploads, deadline);
  } catch (const UploadError&) {
    result = {std::current_exception(), true};
  } catch (...) {
    result = {std::current_exception(), false};
  }
  const bool isFailure = result.failure && !result.isFaultOfUploads;
  nextCheck_ = steady_clock::now() + (isFailure ? pauseAfterFailure : settings_.idleTime);
  outageLog_.add(isFailure ? result.failure : nullptr, !uploads.empty());
  const utilities::MutexLock lock(mutex_);
  deadline_ = std::nullopt;
  isFailing_ = isFailure;
  return result;
}

void StoreWriter::removeOldRows() {
  bool isMore = false;
  try {
    isMore = store_.removeSome(steadyZero_ + steady_clock::now().time_since_epoch() -
                               *settings_.retention);
  } catch (const std::exception& error) {
    log::LogManager::instance()
        .getLogger("qel.collector")
        ->log(log::Level::Warning, std::string("cannot delete old rows: ") + error.what());
  }
  nextRemoval_ = steady_clock::now() + (isMore ? std::chrono::milliseconds(shortPause) : longPause);
}

}  // namespace qel::collector
