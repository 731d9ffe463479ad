#include "Application/Log/Analytics/Database/AccumulatingDispatcher.h"

#include "Application/Log/Analytics/Items/CipInfoItem.h"
#include "host/QelAssert/Assert.h"
#include "host/QelUtilities/Patience.h"

namespace qel::log::analytics {

using qel::json::ToJsonInterface;
using qel::util::RunPolicy;
using utilities::Patience;

AccumulatingDispatcher::AccumulatingDispatcher(Callback callback,
                                               std::chrono::duration<double> period,
                                               unsigned int capacity)
    : callback_(std::move(callback)), period_(period), capacity_(capacity) {
  pending_.reserve(capacity);
  working_.reserve(capacity);
}

AccumulatingDispatcher::~AccumulatingDispatcher() {
  // The loop's destructor makes the worker run once more; that run finds an empty queue. The items
  // are destroyed after the mutex is unlocked, because an item may hold the last reference to an
  // object of the host.
  std::vector<Entry> discarded;
  const utilities::MutexLock lock(mutex_);
  discarded.swap(pending_);
}

void AccumulatingDispatcher::start() {
  auto useCallersAssertHandler = [handler = assert::Assert::getRegisteredForCurrentThread()] {
    assert::AssertFunctionOne::registerHandler(handler);
  };
  loop_.perform(
      std::move(useCallersAssertHandler), [this] { return drain(); }, period_,
      RunPolicy{RunPolicy::AtStop, true});
}

void AccumulatingDispatcher::add(std::unique_ptr<ToJsonInterface> item,
                                 CipDatabaseClientInterface::Table table) {
  if (state_ != State::Open || !item) {
    return;
  }
  const utilities::MutexLock lock(mutex_);
  if (state_ != State::Open) {
    return;
  }
  if (pending_.size() >= capacity_) {
    fail();
    return;
  }
  pending_.emplace_back(std::move(item), table);
}

void AccumulatingDispatcher::join() {
  if (state_ == State::Closed) {
    return;
  }
  if (hasNoWorker_) {
    start();
  }
  hasNoWorker_ = true;
  loop_.stop();
  start();
  hasNoWorker_ = false;
}

void AccumulatingDispatcher::close() {
  stopTime_ = std::chrono::steady_clock::now();
  std::vector<Entry> discarded;  // destroyed after the mutex is unlocked, as in the destructor
  {
    const utilities::MutexLock lock(mutex_);
    auto open = State::Open;
    state_.compare_exchange_strong(open, State::Closed);
    discarded.swap(pending_);
  }
  loop_.stopAndJoin();
}

bool AccumulatingDispatcher::drain() {
  const Patience patience(Patience::unlimited, stopTime_);
  for (;;) {
    working_.clear();
    if (state_ == State::Open) {
      const utilities::MutexLock lock(mutex_);
      pending_.swap(working_);
    }
    if (working_.empty()) {
      return state_ != State::Failed;
    }
    try {
      callback_(working_);
    } catch (...) {
      state_ = State::Failed;
      return false;
    }
  }
}

/// The mutex stays locked during this call. Other threads in `add` wait for the mutex and then find
/// that the dispatcher has failed. The worker does not lock the mutex after a failure, so stopping
/// the loop here cannot deadlock.
void AccumulatingDispatcher::fail() {
  const Patience patience(Patience::ofHost);
  state_ = State::Failed;
  pending_.clear();
  loop_.stop();
  try {
    std::vector<Entry> marker;
    marker.emplace_back(
        std::make_unique<items::CipInfoItem>(items::CipInfoItem::Area::InsertingItems,
                                             items::CipInfoItem::Severity::CriticalLarge,
                                             "Dispatcher has reached critical level of added data"),
        CipDatabaseClientInterface::Items);
    callback_(marker);
  } catch (...) {
    // The dispatcher has already failed, and there is nowhere else to report the exception.
    return;
  }
}

}  // namespace qel::log::analytics
