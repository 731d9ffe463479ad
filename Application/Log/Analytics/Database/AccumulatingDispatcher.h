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

/// Decouples the threads that add items from the storage that writes them: items queue up, and a
/// worker hands all of them to a callback once every period.
///
/// A full queue, or a callback that throws, makes it fail for good: everything queued is discarded,
/// later items are dropped, and `hasFailed` stays true. A full queue also has one information item
/// written, on the thread that met it. Items still queued at destruction are discarded; `join`
/// before it writes them.
///
/// `add` and `hasFailed` may be called from any thread; `start`, `join` and destruction belong to
/// one thread at a time.
class QEL_ANALYTICS_EXPORT AccumulatingDispatcher {
 public:
  /// An item, never null, and the table that it is for.
  using Entry =
      std::pair<std::unique_ptr<qel::json::ToJsonInterface>, CipDatabaseClientInterface::Table>;
  /// Takes a batch in the order in which it was added, on the worker. The information item of a
  /// full queue comes on the adding thread, perhaps at the same time.
  using Callback = std::function<void(const std::vector<Entry>&)>;

  /// Starts nothing. Room for `capacity` entries is set aside twice, so that queueing allocates
  /// nothing.
  AccumulatingDispatcher(Callback callback, std::chrono::duration<double> period,
                         unsigned int capacity);
  AccumulatingDispatcher(const AccumulatingDispatcher&) = delete;
  AccumulatingDispatcher& operator=(const AccumulatingDispatcher&) = delete;
  ~AccumulatingDispatcher();

  /// Starts the worker, which reports assertions the way the calling thread does.
  void start();

  /// Queues the item. Dropped when the dispatcher has failed, or when the item is null.
  void add(std::unique_ptr<qel::json::ToJsonInterface> item,
           CipDatabaseClientInterface::Table table);

  /// Waits until everything queued has been handed to the callback, and goes on working.
  void join();

  /// Whether items are dropped from now on, for good. Any thread.
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
