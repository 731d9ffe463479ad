#pragma once

#include <chrono>
#include <functional>

namespace qel::samplehost {

/// Handles SIGINT and SIGTERM. The first signal interrupts the session and calls `reaction` on a
/// separate thread. The second signal terminates the program. Must be called once, before any
/// thread starts.
void catchInterruptions(std::function<void()> reaction);

bool isInterrupted();

/// Waits for the given time, or until the session is interrupted.
void waitUnlessInterrupted(std::chrono::duration<double> time);

}  // namespace qel::samplehost
