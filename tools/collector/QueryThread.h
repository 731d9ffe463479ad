#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "host/QelUtilities/Mutex.h"
#include "tools/collector/AdminPage.h"
#include "tools/collector/StoreReader.h"

namespace qel::collector {

/// Opens the store for reading. Throws `StoreError` if that fails.
using OpenReader = std::function<std::unique_ptr<StoreReader>()>;

/// A question about the store. Its functions are called on the thread that answers it, and must not
/// throw, except `answer`.
struct Query {
  /// Makes the answer. Must end at the deadline with `StoreError`.
  std::function<AdminPage(StoreReader& reader, std::chrono::steady_clock::time_point deadline)>
      answer;
  /// Makes the answer for a failure: 503 if the store cannot be read, 500 for any other error.
  std::function<AdminPage(int status, const std::string& reason)> refuse;
  /// Receives the answer.
  std::function<void(AdminPage page)> done;
};

/// A thread that answers one query after the other with its own connection to the store. After a
/// failure of the store it opens the store again.
///
/// **Log.** A failure of the store is logged unless the query before failed, too.
///
/// **Threads.** All operations are thread-safe.
class QueryThread {
 public:
  static constexpr std::size_t mostWaiting = 32;

  /// A query that is not answered after `limit` is refused.
  QueryThread(OpenReader open, std::chrono::milliseconds limit);
  QueryThread(const QueryThread&) = delete;
  QueryThread& operator=(const QueryThread&) = delete;
  ~QueryThread() { stop(); }

  /// Refuses the query on the calling thread if too many wait.
  void add(Query query);

  /// Interrupts the query in progress, waits for its end, and forgets those that wait.
  void stop();

 private:
  struct Waiting {
    Query query;
    std::chrono::steady_clock::time_point deadline;
  };

  void run();
  AdminPage answerTo(const Waiting& waiting);
  void replaceReader(std::unique_ptr<StoreReader> reader);

  const OpenReader open_;
  const std::chrono::milliseconds limit_;
  /// Used on the thread, and by `stop` with the mutex, with which the thread replaces it.
  std::unique_ptr<StoreReader> reader_;
  bool isFailing_ = false;  ///< whether the last query failed; used only on the thread
  utilities::Mutex mutex_;
  utilities::Condition changed_;
  std::deque<Waiting> waiting_ QEL_GUARDED_BY(mutex_);
  bool isStopping_ QEL_GUARDED_BY(mutex_) = false;
  std::thread thread_;  ///< last, because it uses the other members
};

}  // namespace qel::collector
