#pragma once

namespace qel::utilities {

/// Whether a line can be written to standard error without blocking. This requires a reader that
/// still reads and keeps up with the writers. Thread-safe.
bool standardErrorTakesLine();

}  // namespace qel::utilities
