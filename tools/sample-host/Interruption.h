#pragma once

#include <chrono>
#include <functional>

namespace qel::samplehost {

/// Handles requests to end the program: SIGINT and SIGTERM, and on Windows Ctrl-C, Ctrl-Break and
/// the closing of the console. The first request interrupts the session and calls `reaction` on a
/// separate thread. The second request terminates the program. When its console is closed, Windows
/// terminates the program after five seconds. Must be called once, before any thread starts.
void catchInterruptions(std::function<void()> reaction);

/// Interrupts the session. Returns false if it was interrupted already.
bool interrupt();

bool isInterrupted();

/// Waits for the given time, or until the session is interrupted.
void waitUnlessInterrupted(std::chrono::duration<double> time);

}  // namespace qel::samplehost
