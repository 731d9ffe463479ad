#include <gmock/gmock.h>

#include "tests/support/Logged.h"
#include "tests/support/Tally.h"
#include "tools/collector/StoreWriter.h"

namespace qel::collector {
namespace {

using namespace std::chrono_literals;
using namespace testing;

/// Records the transactions. They fail while it is full or a user is "!", and wait while it is
/// held.
class FakeStore : public Store {
 public:
  void add(const Uploads& uploads, std::chrono::steady_clock::time_point /*deadline*/) override {
    utilities::MutexLock lock(mutex_);
    std::string transaction;
    for (const auto& upload : uploads) {
      transaction += upload->user;
    }
    transactions_.push_back(transaction);
    changed_.notifyAll();
    changed_.wait(lock, [this]() QEL_REQUIRES(mutex_) { return !isHeld_; });
    if (isFull_) {
      throw StoreError("full");
    }
    if (transaction.find('!') != std::string::npos) {
      throw UploadError("poison");
    }
  }
  bool removeSome(std::chrono::system_clock::time_point /*before*/) override {
    const utilities::MutexLock lock(mutex_);
    return ++removals_ < 3;
  }
  StoreSize size() const override { return {}; }

  void set(bool isHeld, bool isFull) {
    const utilities::MutexLock lock(mutex_);
    isHeld_ = isHeld;
    isFull_ = isFull;
    changed_.notifyAll();
  }
  std::vector<std::string> transactions() {
    const utilities::MutexLock lock(mutex_);
    return transactions_;
  }
  int removals() {
    const utilities::MutexLock lock(mutex_);
    return removals_;
  }

 private:
  utilities::Mutex mutex_;
  utilities::Condition changed_;
  std::vector<std::string> transactions_ QEL_GUARDED_BY(mutex_);
  bool isHeld_ QEL_GUARDED_BY(mutex_) = false;
  bool isFull_ QEL_GUARDED_BY(mutex_) = false;
  int removals_ QEL_GUARDED_BY(mutex_) = 0;
};

class StoreWriterTest : public Test {
 protected:
  StoreWriterTest() { writer_.emplace(store_, WriterSettings{200ms, 900, 24h}); }

  void add(const std::string& user, const std::string& rows = "") {
    writer_->add(
        std::make_shared<const Upload>(R"({"version": "3.1", "events": [)" + rows + "]}", user),
        [this, user](const std::exception_ptr& failure) {
          const utilities::MutexLock lock(mutex_);
          done_[user] = "stored";
          try {
            failure ? std::rethrow_exception(failure) : void();
          } catch (const std::exception& error) {
            done_[user] = error.what();
          }
        });
  }
  /// Lets packages wait while a transaction is held.
  void addTogether(const std::string& users) {
    store_.set(true, false);
    add("0");
    test::waitUntil([this] { return !store_.transactions().empty(); }, 10s);
    for (const char user : users) {
      add({user});
    }
  }
  std::map<std::string, std::string> doneWith(std::size_t count) {
    test::waitUntil(
        [&] {
          const utilities::MutexLock lock(mutex_);
          return done_.size() >= count;
        },
        10s);
    const utilities::MutexLock lock(mutex_);
    return done_;
  }

  FakeStore store_;
  utilities::Mutex mutex_;
  std::map<std::string, std::string> done_ QEL_GUARDED_BY(mutex_);
  std::optional<StoreWriter> writer_;
};

TEST_F(StoreWriterTest, StoresWhatWaitsInTransactionsOfALimitedSize) {
  addTogether("abcde");
  EXPECT_EQ(writer_->queued(), 5U);
  store_.set(false, false);
  EXPECT_THAT(doneWith(6), AllOf(SizeIs(6), Each(Pair(_, "stored"))));
  EXPECT_THAT(store_.transactions(), ElementsAre("0", "abc", "de"));
  EXPECT_EQ(writer_->queued(), 0U);
  EXPECT_TRUE(test::waitUntil([this] { return store_.removals() == 3; }));
}

TEST_F(StoreWriterTest, CollectsRowsUntilTheyAreManyOrHaveWaitedLong) {
  WriterSettings settings;
  settings.batchTime = 1h;
  settings.batchRows = 3;
  writer_.reset();
  writer_.emplace(store_, settings);
  add("a", "{}");
  add("b", "{},1");
  EXPECT_THAT(doneWith(2), SizeIs(2));
  add("c", "{}");
  add("d", "{},{\"a\":1},{}");  // two different rows
  EXPECT_THAT(doneWith(4), SizeIs(4));
  EXPECT_THAT(store_.transactions(), ElementsAre("ab", "cd"));
  writer_.reset();
  settings.batchTime = 200ms;
  settings.idleTime = 100ms;
  writer_.emplace(store_, settings);
  EXPECT_TRUE(test::waitUntil([this] { return store_.transactions().back().empty(); })) << "idle";
  const auto begin = std::chrono::steady_clock::now();
  add("e", "{}");
  doneWith(5);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 200ms);
}

TEST_F(StoreWriterTest, LetsAPackageThatCannotBeStoredFailAlone) {
  addTogether("a!c");
  store_.set(false, false);
  EXPECT_THAT(doneWith(4), ElementsAre(Pair("!", "poison"), Pair("0", "stored"),
                                       Pair("a", "stored"), Pair("c", "stored")));
  EXPECT_TRUE(writer_->isReady());
}

TEST_F(StoreWriterTest, IsNotReadyWhileTheStoreFailsOrHangsAndRecoversByItself) {
  const test::CapturedLog log(log::Level::Info);
  addTogether("ab");
  EXPECT_TRUE(writer_->isReady());
  EXPECT_TRUE(test::waitUntil([this] { return !writer_->isReady(); }));
  store_.set(false, true);
  EXPECT_THAT(doneWith(3), AllOf(SizeIs(3), Each(Pair(_, "full"))));
  EXPECT_THAT(store_.transactions(), ElementsAre("0", "a", "b")) << "smaller after a failure";
  EXPECT_FALSE(writer_->isReady());
  store_.set(false, false);
  EXPECT_TRUE(test::waitUntil([this] { return writer_->isReady(); }));
  EXPECT_EQ(store_.transactions().back(), "");
  EXPECT_THAT(log.text(), EndsWith("full\n")) << "an attempt without packages proves little";
  add("c", "{}");
  doneWith(4);
  EXPECT_THAT(log.text(), MatchesRegex("[^\n]*the store takes no packages: full\n"
                                       "[^\n]*the store takes packages again, after [0-9]+ s\n"));
}

TEST_F(StoreWriterTest, FailsWhatWaitsWhenItStops) {
  addTogether("a");
  std::thread release([this] {
    std::this_thread::sleep_for(50ms);
    store_.set(false, false);
  });
  writer_.reset();
  release.join();
  EXPECT_THAT(doneWith(2), ElementsAre(Pair("0", "stored"), Pair("a", "the collector stops")));
}

}  // namespace
}  // namespace qel::collector
