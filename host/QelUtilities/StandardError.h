#pragma once

namespace qel::utilities {

/// Whether a line can be written to standard error now: neither is its reader behind, so that the
/// writer would wait for it, nor has it gone. Any thread.
bool standardErrorTakesLine();

}  // namespace qel::utilities
