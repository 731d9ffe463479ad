#pragma once

namespace qel::test {

enum class DiskFault { Once, ForGood, Full };

/// What SQLite asks of the system in this program fails: the nth call from now that opens, reads,
/// writes, synchronises, truncates or deletes, and those behind it if that is for good; if the disk
/// is full, only those that write.
void failDiskAt(int nthCall, DiskFault fault);

/// No more faults. Whether a call has failed since the one above.
bool healDisk();

}  // namespace qel::test
