#pragma once

#include <chrono>
#include <functional>

namespace qel::samplehost {

/// Lets the first SIGINT or SIGTERM interrupt the session and call `reaction` on a separate thread.
/// The second signal ends the program. Call this once, before any thread starts.
void catchInterruptions(std::function<void()> reaction);

bool isInterrupted();

/// Waits for the given time, or until the session is interrupted.
void waitUnlessInterrupted(std::chrono::duration<double> time);

}  // namespace qel::samplehost
