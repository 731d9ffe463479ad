#pragma once

namespace qel::utilities {

/// Whether a line can be written to standard error without blocking. This requires a reader that
/// still reads and keeps up with the writers. Windows does not report whether a reader keeps up, so
/// there it is enough that standard error is open. Thread-safe.
bool standardErrorTakesLine();

}  // namespace qel::utilities
