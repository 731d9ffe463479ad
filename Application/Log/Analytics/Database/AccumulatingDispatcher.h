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
#include "host/QelUtilities/Patience.h"

namespace qel::log::analytics {

/// A queue between the threads that add items and the storage that writes them. Once per period a
/// worker passes all queued items to a callback.
///
/// **Failure.** The dispatcher fails for good if the queue is full when an item is added, or if the
/// callback throws. Queued items are discarded, later items are dropped, and `hasFailed` stays
/// true. The thread that finds the queue full also passes one information item to the callback.
///
/// **Destruction** discards queued items. To write them, call `join` first.
///
/// **Threads.** `add` and `hasFailed` are thread-safe. `start`, `join`, `close` and the
/// destructor may be called on any thread, but not concurrently.
class QEL_ANALYTICS_EXPORT AccumulatingDispatcher {
 public:
  /// An item, which is never null, and its table.
  using Entry =
      std::pair<std::unique_ptr<qel::json::ToJsonInterface>, CipDatabaseClientInterface::Table>;
  /// Receives a batch on the worker, with the items in the order in which they were added. If
  /// the queue is full, it receives the information item on the thread that called `add`, possibly
  /// while the worker is passing a batch.
  using Callback = std::function<void(const std::vector<Entry>&)>;

  /// Does not start the worker. Reserves memory for two queues of `capacity` entries, so that `add`
  /// does not allocate.
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

  /// Waits until the callback has received all queued items. The worker then continues. Throws
  /// `std::system_error` if no thread can be created for it; a later call then starts it again.
  void join();

  /// Discards queued items and drops later ones, for good and without a failure. Interrupts a write
  /// in progress, and waits until the worker has ended.
  void close();

  /// Whether the dispatcher has failed for good and drops all items. Thread-safe.
  bool hasFailed() const { return state_ == State::Failed; }

 private:
  enum class State { Open, Closed, Failed };

  bool drain();
  void fail() QEL_REQUIRES(mutex_);

  utilities::Mutex mutex_;
  std::vector<Entry> pending_ QEL_GUARDED_BY(mutex_);
  std::vector<Entry> working_;  ///< used only by the worker
  const Callback callback_;
  const std::chrono::duration<double> period_;
  std::atomic<State> state_{State::Open};
  utilities::Patience::StopTime stopTime_{utilities::Patience::neverStop};  ///< of the worker
  qel::util::ThreadedLoop loop_;
  bool hasNoWorker_ = false;  ///< `join` could not start it again
  const unsigned int capacity_;
};

}  // namespace qel::log::analytics
