#pragma once

#include <chrono>

namespace qel::samplehost {

/// Handles requests to end the program: SIGINT and SIGTERM, and on Windows Ctrl-C, Ctrl-Break and
/// the closing of the console. The first request interrupts the session and sets the exit deadline,
/// so that a sending pass does not delay the exit. The second request terminates the program. When
/// its console is closed, Windows terminates the program after five seconds, so the exit deadline
/// is then three seconds at most. Must be called once, before any thread starts.
void catchInterruptions(std::chrono::milliseconds exitDeadline);

/// Interrupts the session and sets the exit deadline. Returns false if the session was interrupted
/// already.
bool interrupt(std::chrono::milliseconds exitDeadline);

/// Sets the exit deadline, unless an interruption has set it.
void setExitDeadlineUnlessInterrupted(std::chrono::milliseconds exitDeadline);

bool isInterrupted();

/// Waits for the given time, or until the session is interrupted.
void waitUnlessInterrupted(std::chrono::duration<double> time);

}  // namespace qel::samplehost
