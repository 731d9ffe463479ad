#pragma once

namespace qel::utilities {

/// Whether a line can be written to standard error at once: its reader still reads, and keeps up
/// with the writers. Any thread.
bool standardErrorTakesLine();

}  // namespace qel::utilities
