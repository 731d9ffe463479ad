#pragma once

#include <map>
#include <string>

namespace qel::benchmarks {

/// The figures that can be measured only on some systems, by name.
const std::map<std::string, void (*)()>& figuresOfSystem();

/// Measures the longest calls on a host thread while another connection keeps both databases locked
/// for twenty seconds and the queue overflows. Prints "kind of call: milliseconds" lines.
void measureHostThread();

/// Measures and prints the CPU time and the memory that an active client uses while nothing
/// happens. A second memory observer on the same databases runs `speed` times as fast as real time,
/// so that a run of a minute can take the samples of an hour.
void measureIdleClient(int simulatedMinutes, int speed);

/// Measures how long it takes to build and insert one item, without waiting for the worker. Prints
/// nanoseconds, the median of batches.
void measureInsert();

/// Measures how much more memory a pass over a full sending database uses than the idle client.
/// Prints this amount and the size of the rows, both in bytes.
void measurePassMemory();

/// Measures how long `Client::activate` takes on the host thread, with the databases in
/// `directory`. Prints milliseconds.
void measureStart(const std::string& directory);

}  // namespace qel::benchmarks
