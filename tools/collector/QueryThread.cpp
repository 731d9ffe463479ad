#include "tools/collector/QueryThread.h"

#include <exception>
#include <utility>

#include "host/QelLog/LogManager.h"

namespace qel::collector {

using std::chrono::steady_clock;
using utilities::MutexLock;

namespace {

void logFailure(const std::exception& error) {
  log::LogManager::instance()
      .getLogger("qel.collector")
      ->log(log::Level::Warning, std::string("cannot answer a reader: ") + error.what());
}

}  // namespace

QueryThread::QueryThread(OpenReader open, std::chrono::milliseconds limit)
    : open_(std::move(open)), limit_(limit), thread_([this] { run(); }) {}

void QueryThread::add(Query query) {
  {
    const MutexLock lock(mutex_);
    if (!isStopping_ && waiting_.size() < mostWaiting) {
      waiting_.push_back({std::move(query), steady_clock::now() + limit_});
      changed_.notifyOne();
      return;
    }
  }
  query.done(query.refuse(503, "too many questions wait"));
}

void QueryThread::stop() {
  std::deque<Waiting> forgotten;
  {
    const MutexLock lock(mutex_);
    isStopping_ = true;
    forgotten.swap(waiting_);
    if (reader_) {
      reader_->interrupt();
    }
    changed_.notifyOne();
  }
  if (thread_.joinable()) {
    thread_.join();
  }
}

void QueryThread::run() {
  for (;;) {
    Waiting next;
    {
      MutexLock lock(mutex_);
      changed_.wait(lock,
                    [this]() QEL_REQUIRES(mutex_) { return isStopping_ || !waiting_.empty(); });
      if (isStopping_) {
        return;
      }
      next = std::move(waiting_.front());
      waiting_.pop_front();
    }
    next.query.done(answerTo(next));
  }
}

AdminPage QueryThread::answerTo(const Waiting& waiting) {
  if (steady_clock::now() >= waiting.deadline) {
    return waiting.query.refuse(503, "earlier questions took too long");
  }
  try {
    if (!reader_) {
      replaceReader(open_());
    }
    AdminPage page = waiting.query.answer(*reader_, waiting.deadline);
    isFailing_ = false;
    return page;
  } catch (const StoreError& error) {
    replaceReader(nullptr);
    if (!std::exchange(isFailing_, true)) {
      logFailure(error);
    }
    return waiting.query.refuse(503, error.what());
  } catch (const std::exception& error) {
    logFailure(error);
    return waiting.query.refuse(500, error.what());
  }
}

void QueryThread::replaceReader(std::unique_ptr<StoreReader> reader) {
  const MutexLock lock(mutex_);
  reader_ = std::move(reader);
  if (reader_ && isStopping_) {
    reader_->interrupt();
  }
}

}  // namespace qel::collector
