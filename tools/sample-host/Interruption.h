#pragma once

#include <chrono>

namespace qel::samplehost {

/// From now on SIGINT and SIGTERM only interrupt the session; the second one of a kind ends the
/// program as usual.
void catchInterruptions();

bool isInterrupted();

/// Waits for the given time, or until the session is interrupted.
void waitUnlessInterrupted(std::chrono::duration<double> time);

}  // namespace qel::samplehost
