#pragma once

#include <string>

namespace qel::benchmarks {

/// Measures the longest calls on a host's thread while another connection holds both databases for
/// twenty seconds and the queue overflows. Prints "kind of call: milliseconds" lines.
void measureHostThread();

/// Measures the cost of an active client while nothing happens, and prints it. A second memory
/// observer on the same databases runs `speed` times as fast as real time. So a minute's run can
/// take the samples of an hour.
void measureIdleClient(int simulatedMinutes, int speed);

/// Measures the memory that a pass over a full sending database takes beyond that of the idle
/// client. Prints it and the size of the rows, in bytes.
void measurePassMemory();

/// Measures the time that `Client::activate` takes on the host's thread, with the databases in
/// `directory`. Prints milliseconds.
void measureStart(const std::string& directory);

}  // namespace qel::benchmarks
