#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "Application/Log/Analytics/Database/CipDatabaseClientInterface.h"
#include "Core/Utilities/Threads/ThreadedLoop.h"
#include "host/QelJson/ToJsonInterface.h"
#include "host/QelUtilities/Mutex.h"

namespace qel::log::analytics {

/// A queue between the threads that add items and the storage that writes them. Once every period a
/// worker passes all queued items to a callback.
///
/// **Failure.** A full queue or a callback that throws makes the dispatcher fail for good. Queued
/// items are discarded, later items are dropped, and `hasFailed` stays true. The thread that finds
/// the queue full also writes one information item.
///
/// **Destruction** discards queued items. Call `join` before it to write them.
///
/// **Threads.** Any thread may call `add` and `hasFailed`. `start`, `join` and destruction belong
/// to one thread at a time.
class QEL_ANALYTICS_EXPORT AccumulatingDispatcher {
 public:
  /// An item, which is never null, and its table.
  using Entry =
      std::pair<std::unique_ptr<qel::json::ToJsonInterface>, CipDatabaseClientInterface::Table>;
  /// Receives a batch on the worker, in the order of adding. The information item of a full queue
  /// arrives on the adding thread, possibly at the same time.
  using Callback = std::function<void(const std::vector<Entry>&)>;

  /// Does not start the worker. Reserves memory for `capacity` entries twice, so that adding does
  /// not allocate.
  AccumulatingDispatcher(Callback callback, std::chrono::duration<double> period,
                         unsigned int capacity);
  AccumulatingDispatcher(const AccumulatingDispatcher&) = delete;
  AccumulatingDispatcher& operator=(const AccumulatingDispatcher&) = delete;
  ~AccumulatingDispatcher();

  /// Starts the worker, which uses the assertion handler of the calling thread.
  void start();

  /// Queues the item. A null item is dropped, and so is any item after a failure.
  void add(std::unique_ptr<qel::json::ToJsonInterface> item,
           CipDatabaseClientInterface::Table table);

  /// Waits until the callback has received all queued items. The worker then goes on.
  void join();

  /// Whether the dispatcher has failed for good and drops all items. Any thread.
  bool hasFailed() const { return failed_; }

 private:
  bool drain();
  void fail() QEL_REQUIRES(mutex_);

  utilities::Mutex mutex_;
  std::vector<Entry> pending_ QEL_GUARDED_BY(mutex_);
  std::vector<Entry> working_;  ///< of the worker alone
  const Callback callback_;
  const std::chrono::duration<double> period_;
  std::atomic<bool> failed_{false};
  qel::util::ThreadedLoop loop_;
  const unsigned int capacity_;
};

}  // namespace qel::log::analytics
