#pragma once

#include <chrono>
#include <functional>

namespace qel::samplehost {

/// From now on the first SIGINT or SIGTERM only interrupts the session, and has `reaction` called
/// on a thread of its own; the second one ends the program as usual. To be called once, before any
/// thread is started.
void catchInterruptions(std::function<void()> reaction);

bool isInterrupted();

/// Waits for the given time, or until the session is interrupted.
void waitUnlessInterrupted(std::chrono::duration<double> time);

}  // namespace qel::samplehost
