#include "tests/faults/ShortMemory.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include <sqlite3.h>

namespace qel::test {
namespace {

enum class Shortage { OneAllocation, FromThenOn };

constexpr long never = -1;

// Of the sweep under way:
std::atomic<Shortage> shortage;
std::atomic<long> allocationToFail;
std::atomic<bool> hasFailed{false};

thread_local long untilFailure = never;

bool mayAllocate() {
  if (untilFailure != 0) {
    untilFailure -= untilFailure > 0 ? 1 : 0;
    return true;
  }
  hasFailed = true;
  untilFailure = shortage == Shortage::OneAllocation ? never : 0;
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

}  // namespace

int sweepAllocations(const std::function<void()>& attempt) {
  int failures = 0;
  for (const auto planned : {Shortage::OneAllocation, Shortage::FromThenOn}) {
    shortage = planned;
    allocationToFail = 0;
    for (attempt(); hasFailed.exchange(false) && canSqliteRunShort; attempt()) {
      ++allocationToFail;
      ++failures;
    }
  }
  return failures;
}

void runShort() { untilFailure = allocationToFail; }

bool runShortDuring(const std::function<void()>& action) {
  bool threw = false;
  runShort();
  try {
    action();
  } catch (const std::bad_alloc&) {
    threw = true;
  }
  untilFailure = never;
  return threw;
}

bool hasRunShort() { return hasFailed; }

}  // namespace qel::test

void* operator new(std::size_t size) {
  void* const memory = qel::test::mayAllocate() ? std::malloc(size) : nullptr;
  return memory != nullptr ? memory : throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
