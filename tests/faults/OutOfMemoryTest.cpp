#include <fstream>

#include <sqlite3.h>

#include "tests/faults/DatabaseDirectory.h"
#include "tests/support/AssertionRecorder.h"
#include "tests/support/Site.h"
#include "tools/sample-host/SessionScript.h"

namespace qel::test {

using namespace testing;

// Of the current sweep:
std::atomic<bool> failsFromThenOn{false};
std::atomic<long> allocationToFail{0};
std::atomic<bool> hasFailed{false};

thread_local long untilFailure = -1;  ///< negative for no failure

bool mayAllocate() {
  if (untilFailure != 0) {
    untilFailure -= untilFailure > 0 ? 1 : 0;
    return true;
  }
  hasFailed = true;
  untilFailure = failsFromThenOn ? 0 : -1;
  return false;
}

sqlite3_mem_methods memoryOfSqlite;

const bool canSqliteRunShort = [] {
  sqlite3_config(SQLITE_CONFIG_GETMALLOC, &memoryOfSqlite);
  auto methods = memoryOfSqlite;
  methods.xMalloc = [](int size) { return mayAllocate() ? memoryOfSqlite.xMalloc(size) : nullptr; };
  methods.xRealloc = [](void* memory, int size) {
    return mayAllocate() ? memoryOfSqlite.xRealloc(memory, size) : nullptr;
  };
  return sqlite3_config(SQLITE_CONFIG_MALLOC, &methods) == SQLITE_OK;
}();

/// Makes the planned allocation of this thread fail from now on.
void runShort() { untilFailure = allocationToFail; }

/// The same until the action ends. Whether the action ended by `std::bad_alloc`.
bool runShortDuring(const std::function<void()>& action) {
  bool threw = false;
  runShort();
  try {
    action();
  } catch (const std::bad_alloc&) {
    threw = true;
  }
  untilFailure = -1;
  return threw;
}

/// Repeats an attempt until none of its allocations fails: first with one failing allocation, then
/// with all allocations from one on failing. Returns how many attempts saw a failure.
int sweepAllocations(const std::function<void()>& attempt) {
  int failures = 0;
  for (const bool fromThenOn : {false, true}) {
    failsFromThenOn = fromThenOn;
    allocationToFail = 0;
    for (attempt(); hasFailed.exchange(false) && canSqliteRunShort; attempt()) {
      ++allocationToFail;
      ++failures;
    }
  }
  return failures;
}

using OutOfMemoryTest = DatabaseDirectory;

TEST_F(OutOfMemoryTest, RecordsAnEventOrThrowsAndRecordsTheNextOne) {
  MemoryStorage storage;
  storage.parameter.isSendingAllowed = [] { return false; };
  Client client(std::move(storage.owned));
  client.activate(storage.parameter);
  const auto recorded = [&] {
    storage.databases->join();
    return storage.support->texts(Items).size();
  };
  std::ifstream script(QEL_SOURCE_DIR "/samples/session.jsonl");
  int events = 0;
  for (const auto& step : samplehost::readSessionScript(script, "script")) {
    const auto* const event = std::get_if<samplehost::Broadcast>(&step.action);
    const auto atFirst = recorded();
    if (event != nullptr) {
      (*event)();
    }
    if (recorded() == atFirst) {
      continue;  // It is a control line, or an event of an issue storage, which is not registered.
    }
    ++events;
    const int failures = sweepAllocations([&] {
      const auto before = recorded();
      const bool threw = runShortDuring(*event);
      const auto between = recorded();
      EXPECT_TRUE(threw || between > before) << "line " << step.line;
      (*event)();
      EXPECT_GT(recorded(), between) << "line " << step.line;
    });
    EXPECT_GE(failures, 4);
  }
  EXPECT_GT(events, 20);
}

TEST_F(OutOfMemoryTest, QueuesWithoutAllocationsAndEndsStorageWhenTheQueueIsFull) {
  for (const int items : {1, 2}) {
    const int failures = sweepAllocations([&] {
      int batches = 0;
      AccumulatingDispatcher dispatcher([&](const auto&) { ++batches; }, 3600s, 1);
      dispatcher.start();
      for (int i = 0; i < items; ++i) {
        auto item = std::make_unique<Numbered>(i);
        runShortDuring([&] { dispatcher.add(std::move(item), Items); });
      }
      EXPECT_EQ(dispatcher.hasFailed(), items > 1);
      dispatcher.join();
      EXPECT_EQ(batches, hasFailed ? 0 : 1) << "the items, or the marker";
    });
    EXPECT_EQ(failures > 0, items > 1);
  }
}

/// From the rendering of this item on, the worker's memory is short.
struct ShorteningItem : json::ToJsonInterface {
  std::string toJson() const override {
    runShort();
    return {};
  }
};

TEST_F(OutOfMemoryTest, StoresABatchWholeOrLogsItsLoss) {
  const Activation activation{data_};
  int batch = 0;
  const int failures = sweepAllocations([&] {
    const AssertionRecorder assertions;
    const auto logBefore = loggedIn(log_);
    const auto pair = filePair();
    pair->initialize(activation.parameter);
    pair->insert(std::make_unique<ShorteningItem>(), Items);
    pair->insert(std::make_unique<Numbered>(++batch), Items);
    pair->insert(std::make_unique<Numbered>(batch), Items);
    pair->join();
    const bool isLossLogged =
        pair->errorOccurred() || !assertions.lines().empty() || loggedIn(log_) != logBefore;
    for (const auto& file : {sendingFile_, supportFile_}) {
      const auto rows = textsIn(file).count(std::to_string(batch));
      EXPECT_TRUE(rows == 2 || (rows == 0 && isLossLogged)) << file << ' ' << batch;
    }
  });
  EXPECT_GT(failures, 50);
}

/// A sending database that makes the memory of its first reader short.
struct ShorteningDatabase : CipDatabaseClient {
  std::pair<Table, RowMap> getAll(Table table) override {
    std::call_once(once, runShort);
    return CipDatabaseClient::getAll(table);
  }
  std::once_flag once;
};

TEST_F(OutOfMemoryTest, SendsTheRowsOfAFailedPassWithALaterOne) {
  const Site site;
  const Activation activation{site.directory()};
  int rows = 0;
  const int failures = sweepAllocations([&] {
    auto database = std::make_unique<ShorteningDatabase>();
    database->initialize(site.directory());
    database->insertMultiple({std::to_string(rows++)}, Items);
    Client client(std::make_unique<CipDatabases>(std::move(database),
                                                 std::make_unique<MemoryDatabaseClient>()));
    client.activate(activation.parameter);
    client.startSendingItems();  // The thread of this pass has memory enough.
  });
  EXPECT_GT(failures, 50);
  EXPECT_THAT(textsIn(site.sendingFile()), IsEmpty());
  const auto accepted = site.acceptedOrWaiting();
  EXPECT_THAT(std::set<std::string>(accepted.begin(), accepted.end()), SizeIs(rows));
}

TEST_F(OutOfMemoryTest, SurvivesAFileOfAnotherSchemaAndACorruptFile) {
  const std::string key = "(ID INTEGER PRIMARY KEY AUTOINCREMENT, json TEXT";
  const std::string creation = "CREATE TABLE IF NOT EXISTS Items " + key + ")";
  const std::string insertion = "INSERT INTO Items(json) VALUES ('x')";
  int files = 0;
  for (const bool isCorrupt : {false, true}) {
    const int failures = sweepAllocations([&] {
      const auto file = folder_ / std::to_string(files++);
      db::sql::SqlDatabaseAdapter(file).execute("CREATE TABLE \"Items\" " + key + ", more TEXT)");
      db::sql::SqlDatabaseAdapter database(file);
      if (isCorrupt) {
        database.execute(creation);
        std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp(24) << "changed!";  // SQLite reads the file again when this counter changes.
        stream.seekp(4096) << std::string(4096, '\xff');
      }
      runShortDuring([&] {
        const auto transaction = isCorrupt ? database.beginTransaction() : ScopeGuard();
        database.execute(isCorrupt ? insertion : creation);
      });
      auto later = database.execute(insertion);
      if (isCorrupt && !later.boSuccess()) {
        later = database.execute(insertion);  // The first one found the damage.
      }
      EXPECT_TRUE(later.boSuccess()) << later.sErrorMessageGet();
      EXPECT_THAT(database.selectAll("Items").result(), SizeIs(1));
    });
    EXPECT_GT(failures, 20);
  }
}

}  // namespace qel::test

/// These replace the allocation functions of the program. Inlined, they would not match for GCC.
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* const memory = qel::test::mayAllocate() ? std::malloc(size) : nullptr;
  return memory != nullptr ? memory : throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
