#pragma once

#include <functional>

/// Memory that runs out when a test wants it to: this program's `operator new`, and SQLite's.
namespace qel::test {

/// Makes each allocation of an attempt fail in its turn, alone and then with all behind it, until
/// an attempt has seen no failure. Attempts say with the functions below where they run short.
/// Returns how many have.
int sweepAllocations(const std::function<void()>& attempt);

/// From now on this thread's memory runs short as the sweep has planned.
void runShort();

/// The same for as long as the action lasts, whose `std::bad_alloc` ends here. Whether it came.
bool runShortDuring(const std::function<void()>& action);

/// Whether an allocation of the attempt under way has failed.
bool hasRunShort();

}  // namespace qel::test
