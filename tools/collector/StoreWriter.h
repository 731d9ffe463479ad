#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "host/QelUtilities/Mutex.h"
#include "tools/collector/OutageLog.h"
#include "tools/collector/Store.h"
#include "tools/collector/WriterSettings.h"

namespace qel::collector {

/// The one thread that uses the store. It stores all packages that wait in one transaction, and
/// then calls the functions that were passed with them.
///
/// **Destruction** ends the transaction in progress within its deadline, and fails the packages
/// that wait.
///
/// **Log.** As `OutageLog`. **Threads.** All operations are thread-safe.
class StoreWriter {
 public:
  /// Called on the writer's thread: with null when the package is durable, otherwise with the
  /// reason why nothing of it is stored. Must not throw.
  using Done = std::function<void(std::exception_ptr failure)>;

  /// `store` must outlive this object.
  StoreWriter(Store& store, const WriterSettings& settings);
  StoreWriter(const StoreWriter&) = delete;
  StoreWriter& operator=(const StoreWriter&) = delete;
  ~StoreWriter();

  void add(std::shared_ptr<const Upload> upload, Done done);

  /// Whether the last transaction succeeded, and none takes longer than its deadline.
  bool isReady() const;

  /// The number of packages that wait.
  std::size_t queued() const;

 private:
  struct Waiting {
    std::shared_ptr<const Upload> upload;
    Done done;
    std::chrono::steady_clock::time_point arrival;
  };
  using Batch = std::vector<Waiting>;
  struct Result {
    std::exception_ptr failure;
    bool isFaultOfUploads = false;
  };

  void run();
  std::optional<Batch> nextBatch();
  void waitForRows(utilities::MutexLock& lock) QEL_REQUIRES(mutex_);
  void store(const Batch& batch);
  Result attempt(const Uploads& uploads, std::chrono::steady_clock::time_point deadline);
  void removeOldRows();

  Store& store_;
  const WriterSettings settings_;
  /// The time at the zero of the steady clock, so that a jump of the system's clock ages no row.
  const std::chrono::system_clock::time_point steadyZero_ =
      std::chrono::system_clock::now() - std::chrono::steady_clock::now().time_since_epoch();

  // Used only by the writer's thread.
  std::size_t largestWrite_;
  std::chrono::steady_clock::time_point nextRemoval_;
  std::chrono::steady_clock::time_point nextCheck_;
  OutageLog outageLog_;

  mutable utilities::Mutex mutex_;
  utilities::Condition changed_;
  std::deque<Waiting> waiting_ QEL_GUARDED_BY(mutex_);
  std::size_t waitingRows_ QEL_GUARDED_BY(mutex_) = 0;
  bool isStopping_ QEL_GUARDED_BY(mutex_) = false;
  bool isFailing_ QEL_GUARDED_BY(mutex_) = false;
  /// Of the transaction in progress.
  std::optional<std::chrono::steady_clock::time_point> deadline_ QEL_GUARDED_BY(mutex_);

  std::thread thread_;  ///< last, because it uses the other members
};

}  // namespace qel::collector
